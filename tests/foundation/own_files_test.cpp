// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/foundation/own_files.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

namespace kelvane {
namespace {

namespace fs = std::filesystem;

constexpr uid_t kSomebodyElse = 65534;

class OwnFilesTest : public testing::Test {
 protected:
  void SetUp() override {
    std::string pattern = (fs::temp_directory_path() / "kelvane-own-XXXXXX").string();
    ASSERT_NE(mkdtemp(pattern.data()), nullptr);
    folder_ = pattern;
    path_ = folder_ + "/name";
  }
  void TearDown() override { fs::remove_all(folder_); }

  void write(const std::string& path, const std::string& text) { std::ofstream(path) << text; }
  std::string contentOf(const std::string& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  /// Makes what stands at the path somebody else's. False where this user cannot.
  bool giveAway(const std::string& path) {
    return geteuid() == 0 && lchown(path.c_str(), kSomebodyElse, kSomebodyElse) == 0;
  }

  std::string folder_;
  std::string path_;
};

TEST_F(OwnFilesTest, WhereNothingIsThePathIsFree) {
  EXPECT_EQ(directoryState(path_), PathState::Free);
  EXPECT_EQ(plainFileState(path_), PathState::Free);
}

TEST_F(OwnFilesTest, AnOwnFileIsOwnAsAFileAndForeignAsADirectory) {
  write(path_, "x");
  EXPECT_EQ(plainFileState(path_), PathState::Own);
  EXPECT_EQ(directoryState(path_), PathState::Foreign);
}

TEST_F(OwnFilesTest, AnOwnDirectoryIsOwnAsADirectoryAndForeignAsAFile) {
  fs::create_directory(path_);
  EXPECT_EQ(plainFileState(path_), PathState::Foreign);
  EXPECT_EQ(directoryState(path_), PathState::Own);
}

TEST_F(OwnFilesTest, LinksAreForeignWhereverTheyLead) {
  write(folder_ + "/file", "x");
  for (const std::string& target : {folder_ + "/file", folder_, folder_ + "/nowhere"}) {
    fs::create_symlink(target, path_);
    EXPECT_EQ(plainFileState(path_), PathState::Foreign) << target;
    EXPECT_EQ(directoryState(path_), PathState::Foreign) << target;
    EXPECT_FALSE(makeOwnFile(path_)) << target;
    fs::remove(path_);
  }
  EXPECT_EQ(contentOf(folder_ + "/file"), "x");
  EXPECT_FALSE(fs::exists(folder_ + "/nowhere"));
}

TEST_F(OwnFilesTest, AFileWithASecondNameIsForeign) {
  write(folder_ + "/file", "x");
  fs::create_hard_link(folder_ + "/file", path_);
  EXPECT_EQ(plainFileState(path_), PathState::Foreign);
  EXPECT_FALSE(makeOwnFile(path_));
}

TEST_F(OwnFilesTest, PipesAreForeign) {
  ASSERT_EQ(mkfifo(path_.c_str(), 0600), 0);
  EXPECT_EQ(plainFileState(path_), PathState::Foreign);
  EXPECT_FALSE(makeOwnFile(path_));
}

TEST_F(OwnFilesTest, WhatIsSomebodyElsesIsForeignAndStaysAsItIs) {
  write(path_, "x");
  fs::create_directory(folder_ + "/directory");
  write(folder_ + "/directory/file", "y");
  if (!giveAway(path_) || !giveAway(folder_ + "/directory"))
    GTEST_SKIP() << "only root can test it";
  EXPECT_EQ(plainFileState(path_), PathState::Foreign);
  EXPECT_EQ(directoryState(folder_ + "/directory"), PathState::Foreign);
  EXPECT_FALSE(makeOwnFile(path_));
  removeOwn(path_);
  removeOwn(folder_ + "/directory");
  EXPECT_EQ(contentOf(path_), "x");
  EXPECT_EQ(contentOf(folder_ + "/directory/file"), "y");
}

TEST_F(OwnFilesTest, ANewFileIsItsOwnersAlone) {
  const mode_t before = umask(0);
  EXPECT_TRUE(makeOwnFile(path_));
  umask(before);
  EXPECT_EQ(fs::status(path_).permissions(), fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(OwnFilesTest, AnOwnFileIsTakenAsItIs) {
  write(path_, "x");
  EXPECT_TRUE(makeOwnFile(path_));
  EXPECT_EQ(contentOf(path_), "x");
}

TEST_F(OwnFilesTest, RemovalTakesLinksAndDirectoriesAndNotWhatLinksLeadTo) {
  fs::create_directory(folder_ + "/kept");
  write(folder_ + "/kept/file", "x");
  fs::create_symlink(folder_ + "/kept", path_);
  removeOwn(path_);
  EXPECT_FALSE(fs::is_symlink(path_));
  fs::create_directory(path_);
  fs::create_symlink(folder_ + "/kept", path_ + "/link");
  removeOwn(path_);
  EXPECT_FALSE(fs::exists(path_));
  EXPECT_EQ(contentOf(folder_ + "/kept/file"), "x");
}

}  // namespace
}  // namespace kelvane
