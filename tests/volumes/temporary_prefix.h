// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <string>

namespace kelvane::test {

/// A folder of the test's own in place of the machine's root for all fixed paths, with "/Volumes"
/// and "/tmp" in it. While it lives, the environment names it, and the built auxiliary programs are
/// found. At its end whatever is still mounted in it is taken away, and it is deleted.
class TemporaryPrefix {
 public:
  TemporaryPrefix();
  ~TemporaryPrefix();
  TemporaryPrefix(const TemporaryPrefix&) = delete;
  TemporaryPrefix& operator=(const TemporaryPrefix&) = delete;

  const std::string& path() const { return path_; }
  std::string volumes() const { return path_ + "/Volumes"; }

 private:
  std::string path_;
};

/// Sets an environment variable for the time of a test.
class ScopedVariable {
 public:
  ScopedVariable(std::string name, const std::string& value);
  ~ScopedVariable();
  ScopedVariable(const ScopedVariable&) = delete;
  ScopedVariable& operator=(const ScopedVariable&) = delete;

 private:
  std::string name_;
};

}  // namespace kelvane::test
