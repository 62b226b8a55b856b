// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace kelvane::test {

/// A directory of its own for one test, removed with everything in it, also with directories that
/// may not be written.
class Workshop {
 public:
  Workshop();
  ~Workshop();
  Workshop(const Workshop&) = delete;
  Workshop& operator=(const Workshop&) = delete;

  [[nodiscard]] const std::filesystem::path& path() const { return path_; }
  [[nodiscard]] std::filesystem::path operator/(std::string_view name) const {
    return path_ / name;
  }

 private:
  std::filesystem::path path_;
};

struct RunResult {
  int status = -1;     ///< the exit status; 128 and the signal's number when a signal ended it
  std::string output;  ///< what it wrote to standard output
  std::string errors;  ///< and to standard error
};

/// Runs a program that is found in PATH (or given with its path) and waits for its end.
RunResult run(const std::vector<std::string>& words);

/// Runs a program that has to succeed; a test failure with its words where it does not.
std::string mustRun(const std::vector<std::string>& words);

void writeFile(const std::filesystem::path& path, std::string_view content);
std::string readFile(const std::filesystem::path& path);
void setModificationTime(const std::filesystem::path& path, std::int64_t seconds);

}  // namespace kelvane::test
