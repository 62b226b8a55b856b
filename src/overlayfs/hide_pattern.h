// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <string>
#include <string_view>

namespace kelvane {

/// The mkisofs pattern that names a placeholder: its path, in which every ä, ö, ü, ß, {, }, [ and ]
/// is replaced by "*".
///
/// Either case, and composed (U+00E4) or decomposed (a letter followed by U+0308), which is
/// replaced as a whole. Nothing else is escaped or changed; bytes that are no valid UTF-8 pass
/// through.
std::string hidePattern(std::string_view placeholderPath);

}  // namespace kelvane
