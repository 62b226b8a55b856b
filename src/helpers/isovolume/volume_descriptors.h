// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <optional>
#include <string>

#include "helpers/isovolume/block_source.h"

namespace kelvane::isovolume {

/// What a volume descriptor says that a reader needs (ECMA-119, 8.4 and 8.5).
struct VolumeDescriptor {
  std::string volumeId;  ///< without the blanks that fill it; UTF-8 from Joliet, bytes as they are
                         ///< from ISO-9660
  std::uint32_t volumeSpaceSize = 0;  ///< in blocks
  std::uint64_t rootExtent = 0;
  std::uint32_t rootLength = 0;  ///< in bytes
};

struct VolumeDescriptors {
  std::optional<VolumeDescriptor> primary;
  std::optional<VolumeDescriptor> joliet;
};

/// Reads the descriptors of the session that starts at `sessionStart`: they begin 16 blocks behind
/// it and end with a terminator, with the first block that is no descriptor, or after 64. A damaged
/// one is passed over. Nothing, with the reason in `*error`, when neither a primary descriptor nor
/// a Joliet one is there.
std::optional<VolumeDescriptors> readVolumeDescriptors(BlockSource& source, Lba sessionStart,
                                                       std::string* error);

}  // namespace kelvane::isovolume
