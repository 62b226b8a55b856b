// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/foundation/paths.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace kelvane {
namespace {

class PathsTest : public testing::Test {
 protected:
  void SetUp() override {
    std::string pattern = testing::TempDir() + "kvpathsXXXXXX";
    folder_ = mkdtemp(pattern.data());
    unsetenv("KELVANEFS_PREFIX");
    unsetenv("XDG_RUNTIME_DIR");
  }
  void TearDown() override {
    unsetenv("KELVANEFS_PREFIX");
    std::filesystem::remove_all(folder_);
  }

  std::string folder_;
};

TEST_F(PathsTest, FixedPathsAreTheOnesThatUsersSee) {
  EXPECT_EQ(paths::temporaryDirectory(), "/tmp");
  EXPECT_EQ(paths::overlayDirectory(812), "/tmp/812");
  EXPECT_EQ(paths::overlayDirectory(-1), "/tmp/-1");
  EXPECT_EQ(paths::hideListFile("/tmp/812"), "/tmp/.812.hide");
  EXPECT_EQ(paths::burnImage("/tmp/812"), "/tmp/812.iso");
  EXPECT_EQ(paths::hiddenMountFolder(), "/tmp/kelvanefsmount");
  EXPECT_EQ(paths::hiddenMountPoint(), "/tmp/kelvanefsmount/.mnt");
}

TEST_F(PathsTest, APrefixMovesEveryFixedPath) {
  setenv("KELVANEFS_PREFIX", (folder_ + "/").c_str(), 1);
  EXPECT_EQ(paths::temporaryDirectory(), folder_ + "/tmp");
  EXPECT_EQ(paths::overlayMountPoint(), folder_ + "/Volumes/tarnwick");
  EXPECT_EQ(paths::hideListFile(paths::overlayDirectory(812)), folder_ + "/tmp/.812.hide");
}

TEST_F(PathsTest, TheFolderOfVolumesIsMadeOnDemandAndOpenToEverybody) {
  setenv("KELVANEFS_PREFIX", folder_.c_str(), 1);
  ASSERT_EQ(paths::volumesDirectory(), folder_ + "/Volumes");
  struct stat status {};
  ASSERT_EQ(stat((folder_ + "/Volumes").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777u, 01777u);
}

TEST_F(PathsTest, WhereTheFolderOfVolumesCannotBeMadeTheRuntimeFolderStandsIn) {
  setenv("KELVANEFS_PREFIX", folder_.c_str(), 1);
  std::ofstream(folder_ + "/Volumes") << "in the way";
  setenv("XDG_RUNTIME_DIR", (folder_ + "/run").c_str(), 1);
  EXPECT_EQ(paths::volumesDirectory(), folder_ + "/run/kelvanefs/Volumes");
  EXPECT_TRUE(std::filesystem::is_directory(folder_ + "/run/kelvanefs/Volumes"));
}

TEST_F(PathsTest, TheReferenceDateIsTheFirstOfJanuary2001) {
  const auto unixSeconds = static_cast<int64_t>(std::time(nullptr));
  EXPECT_NEAR(static_cast<double>(paths::secondsSinceReferenceDate()),
              static_cast<double>(unixSeconds - 978307200), 2.0);
}

TEST_F(PathsTest, PathComponentsAreAppendedWithExactlyOneSlash) {
  EXPECT_EQ(paths::appendPathComponent("/tmp/812", "/a/b"), "/tmp/812/a/b");
  EXPECT_EQ(paths::appendPathComponent("/tmp/812/", "a"), "/tmp/812/a");
  EXPECT_EQ(paths::appendPathComponent("/tmp/812", "/"), "/tmp/812");
  EXPECT_EQ(paths::appendPathComponent("/", "a"), "/a");
}

TEST_F(PathsTest, TheLastComponentIgnoresATrailingSlash) {
  EXPECT_EQ(paths::lastPathComponent("/tmp/812"), "812");
  EXPECT_EQ(paths::lastPathComponent("/tmp/812/"), "812");
  EXPECT_EQ(paths::lastPathComponent("812"), "812");
  EXPECT_EQ(paths::lastPathComponent("/"), "/");
}

}  // namespace
}  // namespace kelvane
