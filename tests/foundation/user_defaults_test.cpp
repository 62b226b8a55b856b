// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/foundation/user_defaults.h"

#include <gtest/gtest.h>

#include <QSettings>
#include <filesystem>

namespace kelvane {
namespace {

class UserDefaultsTest : public testing::Test {
 protected:
  void SetUp() override {
    std::string pattern = testing::TempDir() + "kvdefaultsXXXXXX";
    folder_ = mkdtemp(pattern.data());
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, QString::fromStdString(folder_));
  }
  void TearDown() override { std::filesystem::remove_all(folder_); }

  UserDefaults& defaults_ = UserDefaults::standard();
  std::string folder_;
};

TEST_F(UserDefaultsTest, AnAbsentKeyReadsAsNo) {
  EXPECT_FALSE(defaults_.boolForKey("autohide"));
  EXPECT_FALSE(defaults_.stringForKey("licenseShownForVersion").has_value());
}

TEST_F(UserDefaultsTest, WhatIsSetIsReadUntilItIsRemoved) {
  defaults_.setBool(true, "autohide");
  defaults_.setString("1.2", "licenseShownForVersion");
  EXPECT_TRUE(defaults_.boolForKey("autohide"));
  EXPECT_EQ(defaults_.stringForKey("licenseShownForVersion"), "1.2");
  defaults_.removeKey("autohide");
  EXPECT_FALSE(defaults_.boolForKey("autohide"));
}

TEST_F(UserDefaultsTest, OnlyTrueValuesReadAsYes) {
  for (const char* yes : {"true", "TRUE", "1", "YES", "yes"}) {
    defaults_.setString(yes, "disableUpdateCheck");
    EXPECT_TRUE(defaults_.boolForKey("disableUpdateCheck")) << yes;
  }
  for (const char* no : {"false", "0", "NO", "", "perhaps"}) {
    defaults_.setString(no, "disableUpdateCheck");
    EXPECT_FALSE(defaults_.boolForKey("disableUpdateCheck")) << no;
  }
}

}  // namespace
}  // namespace kelvane
