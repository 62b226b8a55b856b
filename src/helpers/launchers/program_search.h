// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kelvane::launchers {

/// The exit status where the program to be launched is missing, as a shell's.
inline constexpr int kProgramMissing = 127;

/// Finds the first of `names` that is an executable file in a folder of `searchPath` (separated by
/// colons) or else in /usr/bin: every folder is tried for the first name, then for the second. The
/// launcher itself, known by its file, is never what is found, though it may bear one of the names
/// and lie on the path.
std::optional<std::string> findProgram(const std::vector<std::string>& names,
                                       std::string_view searchPath, const std::string& ownFile);

/// Replaces this process by the program; `arguments` begins with its name. Returns only where that
/// fails, with kProgramMissing and a line on standard error.
int replaceByProgram(const std::string& program, const std::vector<std::string>& arguments);

}  // namespace kelvane::launchers
