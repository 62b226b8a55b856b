// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace kelvane::virtualdrive {

/// How a program ended. A signal N counts as status 128 + N.
struct Finished {
  int status = -1;
  std::string out;
  std::string err;
};

struct ProgramOptions {
  std::filesystem::path folder;
  /// What it reads from its standard input.
  std::string input;
};

/// Runs a program to its end.
Finished runProgram(const std::vector<std::string>& command, const ProgramOptions& options = {});

/// kelvanedisc with these arguments.
Finished kelvanedisc(std::vector<std::string> arguments, const ProgramOptions& options = {});

}  // namespace kelvane::virtualdrive
