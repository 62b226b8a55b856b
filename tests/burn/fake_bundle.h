// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "foundation/temporary_folder.h"

namespace kelvane::testing {

/// An installation of its own, whose auxiliary programs a test writes as shell scripts. It is the
/// application's while it lives.
class FakeBundle {
 public:
  FakeBundle() {
    std::filesystem::create_directories(libexec());
    if (const char* before = std::getenv(kVariable)) before_ = before;
    setenv(kVariable, folder_.file("bin/kelvanefs").c_str(), 1);
  }
  ~FakeBundle() {
    if (before_.empty()) {
      unsetenv(kVariable);
    } else {
      setenv(kVariable, before_.c_str(), 1);
    }
  }
  FakeBundle(const FakeBundle&) = delete;
  FakeBundle& operator=(const FakeBundle&) = delete;

  std::string libexec() const { return folder_.file("libexec/kelvanefs"); }
  /// A file that scripts may write and the test reads; scripts find its path as "$NOTES".
  std::string notesPath() const { return folder_.file("notes"); }
  std::string notes() const {
    std::ifstream file(notesPath());
    return {std::istreambuf_iterator<char>(file), {}};
  }

  void addProgram(const std::string& name, const std::string& script) const {
    const std::string path = libexec() + "/" + name;
    std::ofstream(path) << "#!/bin/sh\nNOTES='" << notesPath() << "'\n" << script << "\n";
    chmod(path.c_str(), 0755);
  }

 private:
  static constexpr char kVariable[] = "KELVANEFS_EXECUTABLE";

  TemporaryFolder folder_;
  std::string before_;
};

}  // namespace kelvane::testing
