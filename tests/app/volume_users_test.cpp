// SPDX-License-Identifier: GPL-2.0-or-later
#include "app/volume_users.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

namespace kelvane {
namespace {

namespace fs = std::filesystem;

class VolumeUsers : public testing::Test {
 protected:
  void SetUp() override {
    std::string pattern = testing::TempDir() + "kvusersXXXXXX";
    folder_ = fs::canonical(mkdtemp(pattern.data())).string();
  }
  void TearDown() override { fs::remove_all(folder_); }

  std::string folder_;
};

TEST_F(VolumeUsers, AFolderThatNobodyUsesHasNone) {
  EXPECT_TRUE(programsUsing(folder_).empty());
}

TEST_F(VolumeUsers, AnOpenFileIsFoundWithItsProcess) {
  std::ofstream file(folder_ + "/open.txt");
  const std::vector<VolumeUser> users = programsUsing(folder_);
  ASSERT_EQ(users.size(), 1u);
  EXPECT_EQ(users[0].processIdentifier, getpid());
  EXPECT_EQ(users[0].path, folder_ + "/open.txt");
}

TEST_F(VolumeUsers, AFolderWhoseNameOnlyBeginsTheSameIsAnother) {
  fs::create_directory(folder_ + "/volume");
  fs::create_directory(folder_ + "/volume 1");
  std::ofstream file(folder_ + "/volume 1/open.txt");
  EXPECT_TRUE(programsUsing(folder_ + "/volume").empty());
}

TEST_F(VolumeUsers, EachHasASentenceOfItsOwn) {
  EXPECT_EQ(
      describeVolumeUsers({{812, "sleep", "/Volumes/tarnwick"}, {9, "vi", "/Volumes/tarnwick/a"}}),
      "sleep (process 812) uses /Volumes/tarnwick.\nvi (process 9) uses /Volumes/tarnwick/a.");
}

}  // namespace
}  // namespace kelvane
