// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <string>

namespace kelvane {

/// Loads the strings table of the user's language, English where there is none of it. Called once,
/// on the main thread, after the application object has been made. `language` such as "de"
/// overrides the user's choice.
void loadStringsTable(const std::string& language = {});

/// The text of `key` in the user's language; the key itself where the table has none.
std::string localizedString(const std::string& key);

/// The text of `key` in the user's language; `english` where there is no table, as in the programs
/// that work for the application.
std::string localizedString(const std::string& key, const std::string& english);

}  // namespace kelvane
