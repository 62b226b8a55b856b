// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <cstdint>
#include <string>

namespace kelvane {

/// Makes the volumes in a session's image end where the session ends on the disc: adds the block
/// that the session begins at to the volume space size (ECMA-119 8.4.8) of the primary and of every
/// supplementary descriptor.
///
/// mkisofs gives the size of the session alone, although all extents count from the first block of
/// the disc. Linux takes extents beyond that size for damage and shows such a session without Rock
/// Ridge. False where the image has no such descriptors or cannot be written to; what was changed
/// until then stays so.
bool makeVolumesEndWithSession(const std::string& image, uint32_t sessionStart);

/// The block that a session begins at, from the session string of a disc that is continued:
/// "previous,next" as mkisofs's -C takes it. 0 where the disc has no session.
uint32_t sessionStartIn(const std::string& sessionString);

}  // namespace kelvane
