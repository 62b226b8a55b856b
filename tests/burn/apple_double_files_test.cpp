// SPDX-License-Identifier: GPL-2.0-or-later
#include "burn/apple_double_files.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "foundation/temporary_folder.h"
#include "media/recorded_log.h"

namespace kelvane::test {
namespace {

namespace fs = std::filesystem;

class AppleDoubleFiles : public ::testing::Test {
 protected:
  void write(const std::string& name) const {
    fs::create_directories(fs::path(folder_.file(name)).parent_path());
    std::ofstream(folder_.file(name)) << "content";
  }
  bool exists(const std::string& name) const {
    return fs::exists(fs::symlink_status(folder_.file(name)));
  }
  /// Removes them, and gives the number of lines that were logged, all of them the same.
  size_t remove() {
    removeAppleDoubleFiles(folder_.file(""));
    EXPECT_THAT(log_.lines(), ::testing::Each("AppleDouble files suppressed. Resourceforks and "
                                              "extended attributes will not be preserved."));
    return log_.lines().size();
  }

  kelvane::testing::TemporaryFolder folder_;
  RecordedLog log_;
};

TEST_F(AppleDoubleFiles, GoWhereverTheyAreAndNothingElseDoes) {
  for (const char* name :
       {"._top", "docs/._a", "docs/deep/._b", "docs/a", "docs/kept._c", "_d", ".e", "docs/.f/g"}) {
    write(name);
  }
  EXPECT_EQ(remove(), 3u);
  for (const char* name : {"._top", "docs/._a", "docs/deep/._b"}) EXPECT_FALSE(exists(name));
  for (const char* name : {"docs/a", "docs/kept._c", "_d", ".e", "docs/.f/g"}) {
    EXPECT_TRUE(exists(name)) << name;
  }
}

TEST_F(AppleDoubleFiles, ADirectoryGoesWithAllThatIsInItAndCountsOnce) {
  write("docs/._folder/a");
  write("docs/._folder/._b");
  EXPECT_EQ(remove(), 1u);
  EXPECT_FALSE(exists("docs/._folder"));
  EXPECT_TRUE(exists("docs"));
}

TEST_F(AppleDoubleFiles, LinksAreNotFollowed) {
  const kelvane::testing::TemporaryFolder elsewhere;
  std::ofstream(elsewhere.file("._theirs")) << "content";
  fs::create_symlink(elsewhere.file(""), folder_.file("link"));
  fs::create_symlink(elsewhere.file(""), folder_.file("._link"));
  EXPECT_EQ(remove(), 1u);
  EXPECT_TRUE(exists("link"));
  EXPECT_FALSE(exists("._link"));
  EXPECT_TRUE(fs::exists(elsewhere.file("._theirs")));
}

TEST_F(AppleDoubleFiles, ADirectoryThatCannotBeReadDoesNotEndTheWalk) {
  write("z/._last");
  write("a/._first");
  // Deeper than a path can say.
  const std::string name(250, 'n');
  int directory = open(folder_.file(".").c_str(), O_PATH | O_CLOEXEC);
  for (int depth = 0; depth < 20; ++depth) {
    ASSERT_EQ(mkdirat(directory, name.c_str(), 0755), 0);
    const int next = openat(directory, name.c_str(), O_PATH | O_CLOEXEC);
    close(directory);
    directory = next;
  }
  close(directory);
  EXPECT_EQ(remove(), 2u);
  EXPECT_FALSE(exists("z/._last"));
  EXPECT_FALSE(exists("a/._first"));
}

TEST_F(AppleDoubleFiles, OneThatCannotBeDeletedIsLoggedAndDoesNotEndTheWalk) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can mount something on the directory";
  fs::create_directory(folder_.file("._busy"));
  write("a/._first");
  write("z/._last");
  ASSERT_EQ(mount("none", folder_.file("._busy").c_str(), "tmpfs", 0, ""), 0);
  const size_t lines = remove();
  EXPECT_TRUE(exists("._busy"));
  EXPECT_EQ(umount(folder_.file("._busy").c_str()), 0);
  EXPECT_EQ(lines, 3u);
  EXPECT_FALSE(exists("a/._first"));
  EXPECT_FALSE(exists("z/._last"));
}

}  // namespace
}  // namespace kelvane::test
