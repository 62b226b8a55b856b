// SPDX-License-Identifier: GPL-2.0-or-later
#include "volumes/temporary_prefix.h"

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <system_error>
#include <utility>
#include <vector>

#include "platform/volumes/mount_table.h"
#include "platform/volumes/unmount.h"

namespace kelvane::test {

TemporaryPrefix::TemporaryPrefix() {
  std::string pattern = (std::filesystem::temp_directory_path() / "kelvane-test-XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no temporary folder");
  path_ = std::filesystem::canonical(pattern).string();
  std::filesystem::create_directory(volumes());
  std::filesystem::create_directory(path_ + "/tmp");
  setenv("KELVANEFS_PREFIX", path_.c_str(), 1);
  setenv("KELVANEFS_EXECUTABLE", KELVANE_BIN_DIR "/kelvanefs", 1);
}

TemporaryPrefix::~TemporaryPrefix() {
  const std::vector<MountTableLine> table = readMountTable();
  for (auto line = table.rbegin(); line != table.rend(); ++line) {
    if (line->mountedOn.starts_with(path_ + "/")) {
      unmountAtPath(line->mountedOn, UnmountManner::Detach);
    }
  }
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
  unsetenv("KELVANEFS_PREFIX");
  unsetenv("KELVANEFS_EXECUTABLE");
}

ScopedVariable::ScopedVariable(std::string name, const std::string& value)
    : name_(std::move(name)) {
  setenv(name_.c_str(), value.c_str(), 1);
}

ScopedVariable::~ScopedVariable() {
  unsetenv(name_.c_str());
}

}  // namespace kelvane::test
