// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <string>
#include <string_view>

namespace kelvane {

/// Whether a line of mkisofs or growisofs is one of those that a burn without trouble consists of
/// (genisoimage 1.1.11, growisofs 7.1).
bool isOrdinaryLine(std::string_view line);

/// `said` without such lines; all of it where nothing else is in it.
std::string withoutOrdinaryLines(const std::string& said);

}  // namespace kelvane
