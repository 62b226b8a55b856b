// SPDX-License-Identifier: GPL-2.0-or-later
#include "burn/kept_changes.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "platform/foundation/paths.h"
#include "volumes/temporary_prefix.h"

namespace kelvane::test {
namespace {

namespace fs = std::filesystem;

class KeptChanges : public ::testing::Test {
 protected:
  void SetUp() override {
    overlay_ = paths::overlayDirectory(812);
    hideList_ = paths::hideListFile(overlay_);
    fs::create_directories(overlay_ + "/docs");
    write(overlay_ + "/docs/added", "content");
  }
  static void write(const std::string& path, const std::string& content) {
    std::ofstream(path) << content;
  }
  static std::string contentOf(const std::string& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  TemporaryPrefix prefix_;
  std::string overlay_;
  std::string hideList_;
};

TEST_F(KeptChanges, StandBesideTheOverlayWithTheListOfWhatWasDeleted) {
  write(hideList_, overlay_ + "/docs/old");
  EXPECT_EQ(keepChanges(overlay_), overlay_ + ".kept");
  EXPECT_EQ(contentOf(overlay_ + ".kept/docs/added"), "content");
  EXPECT_EQ(contentOf(overlay_ + ".kept.hide"), overlay_ + "/docs/old");
  EXPECT_FALSE(fs::exists(overlay_));
  EXPECT_FALSE(fs::exists(hideList_));
}

TEST_F(KeptChanges, HoldNoneOfTheEmptyFilesThatStandForDeletedItems) {
  for (const char* name : {"/docs/old", "/docs/Käse", "/docs/empty", "/gone"}) {
    write(overlay_ + name, "");
  }
  // A name is given by its pattern, in which some characters are replaced.
  write(hideList_, overlay_ + "/docs/old\n" + overlay_ + "/docs/K??se\n" + overlay_ + "/gone");
  const std::string kept = keepChanges(overlay_);
  for (const char* name : {"/docs/old", "/docs/Käse", "/gone"}) {
    EXPECT_FALSE(fs::exists(kept + name)) << name;
  }
  EXPECT_TRUE(fs::exists(kept + "/docs/empty")) << "the user's own";
  EXPECT_TRUE(fs::exists(kept + "/docs/added"));
}

TEST_F(KeptChanges, KeepWhatAPatternMayMeanButWasNotMadeFor) {
  write(overlay_ + "/docs/K1", "");
  write(overlay_ + "/docs/K2", "");
  write(prefix_.path() + "/tmp/outside", "");
  write(hideList_,
        overlay_ + "/docs/K?\n" + overlay_ + "/docs/added\n" + prefix_.path() + "/tmp/outside\n");
  const std::string kept = keepChanges(overlay_);
  EXPECT_TRUE(fs::exists(kept + "/docs/K1"));
  EXPECT_TRUE(fs::exists(kept + "/docs/K2"));
  EXPECT_EQ(contentOf(kept + "/docs/added"), "content");
  EXPECT_TRUE(fs::exists(prefix_.path() + "/tmp/outside"));
}

TEST_F(KeptChanges, AListThatIsALinkIsLeftWhereItIs) {
  fs::create_symlink("/dev/null", hideList_);
  EXPECT_EQ(keepChanges(overlay_), overlay_ + ".kept");
  EXPECT_TRUE(fs::is_symlink(hideList_));
  EXPECT_FALSE(fs::exists(overlay_ + ".kept.hide"));
}

TEST_F(KeptChanges, ThoseOfEarlierStay) {
  fs::create_directory(overlay_ + ".kept");
  fs::create_symlink("/nowhere", overlay_ + ".kept-1");
  write(hideList_, "");
  EXPECT_EQ(keepChanges(overlay_), overlay_ + ".kept-2");
  EXPECT_TRUE(fs::exists(overlay_ + ".kept-2.hide"));
}

TEST_F(KeptChanges, StayWhereTheyAreIfNoNameIsFree) {
  fs::create_directory(overlay_ + ".kept");
  for (int number = 1; number < 100; ++number) {
    fs::create_directory(overlay_ + ".kept-" + std::to_string(number));
  }
  EXPECT_EQ(keepChanges(overlay_), overlay_);
  EXPECT_EQ(contentOf(overlay_ + "/docs/added"), "content");
}

TEST_F(KeptChanges, AreNoneWhereThereIsNoDirectoryOfOurs) {
  fs::rename(overlay_, prefix_.path() + "/victim");
  EXPECT_EQ(keepChanges(overlay_), "");
  fs::create_symlink(prefix_.path() + "/victim", overlay_);
  EXPECT_EQ(keepChanges(overlay_), "");
  EXPECT_TRUE(fs::exists(prefix_.path() + "/victim/docs/added"));
}

}  // namespace
}  // namespace kelvane::test
