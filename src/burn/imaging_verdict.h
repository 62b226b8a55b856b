// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <string>
#include <string_view>

namespace kelvane {

enum class ImagingVerdict { Successful, Failed };

/// Judges a run of mkisofs by all it wrote to standard error: successful exactly when that is empty
/// or ends with "Rock Ridge signatures found" and a line feed. Its exit status means nothing.
ImagingVerdict judgeImaging(std::string_view standardError);

/// The text as ASCII, for the log: each byte beyond it becomes a question mark.
std::string asciiText(std::string_view bytes);

}  // namespace kelvane
