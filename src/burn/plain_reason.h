// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <string>
#include <string_view>

namespace kelvane {

/// Why a session could not be built or written, in the user's language and with the file or the
/// limit by its name, where mkisofs and growisofs told it in words that are known here (genisoimage
/// 1.1.11, growisofs 7.1). Empty where they did not.
///
/// `said` is what they wrote to standard error. The overlay directory's path is left out of file
/// names, so that they are those of the volume.
std::string plainReason(std::string_view said, std::string_view overlayDirectory);

/// Whether such a reason is known which lies in the disc: no other session could be added to it
/// either.
bool reasonLiesInTheDisc(std::string_view said);

/// What is worth telling of `said`, with the reason in a line before it, where there is one.
std::string withPlainReason(const std::string& said, std::string_view overlayDirectory);

}  // namespace kelvane
