// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <gtest/gtest.h>

#include <QSettings>
#include <QString>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>

namespace kelvane::test {

/// User defaults of the test's own, empty at first. The user's are out of reach of whatever runs
/// after it in this process, too.
class TemporaryUserDefaults {
 public:
  TemporaryUserDefaults() {
    std::string pattern = testing::TempDir() + "kvdefaultsXXXXXX";
    if (mkdtemp(pattern.data()) == nullptr) ADD_FAILURE() << "no temporary folder";
    folder_ = pattern;
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, QString::fromStdString(folder_));
  }
  ~TemporaryUserDefaults() {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
  }
  TemporaryUserDefaults(const TemporaryUserDefaults&) = delete;
  TemporaryUserDefaults& operator=(const TemporaryUserDefaults&) = delete;

  /// As XDG_CONFIG_HOME it gives programs that the test starts the same defaults.
  const std::string& folder() const { return folder_; }

 private:
  std::string folder_;
};

}  // namespace kelvane::test
