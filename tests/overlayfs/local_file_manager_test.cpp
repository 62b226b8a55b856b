// SPDX-License-Identifier: GPL-2.0-or-later
#include "overlayfs/local_file_manager.h"

#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "overlayfs/overlay_trees.h"

namespace kelvane::tests {
namespace {

class LocalFileManagerTest : public testing::Test {
 protected:
  std::string at(const std::string& path) const { return trees.root() + path; }
  OverlayTrees trees;
  LocalFileManager fm;
};

TEST_F(LocalFileManagerTest, AFileExistsWhereALinkLeadsAndAttributesAreTheLinks) {
  ASSERT_EQ(symlink("nowhere", at("/broken").c_str()), 0);
  EXPECT_FALSE(fm.fileExists(at("/broken")));
  ASSERT_TRUE(fm.attributesOfItem(at("/broken")).has_value());
  EXPECT_TRUE(S_ISLNK(fm.attributesOfItem(at("/broken"))->st_mode));
}

TEST_F(LocalFileManagerTest, RemovesATreeWithDirectoriesThatAllowNothing) {
  runShell("cd " + at("/") + " && mkdir -p t/a/b && echo x > t/a/b/f && chmod 0 t/a/b t/a");
  EXPECT_TRUE(fm.removeItem(at("/t")));
  EXPECT_FALSE(exists(at("/t")));
}

TEST_F(LocalFileManagerTest, RemovalDoesNotFollowLinks) {
  runShell("cd " + at("/") + " && mkdir kept t && echo x > kept/f && ln -s ../kept t/link");
  EXPECT_TRUE(fm.removeItem(at("/t")));
  EXPECT_TRUE(exists(at("/kept/f")));
}

TEST_F(LocalFileManagerTest, ACopyIsEqualInContentPermissionsAndTimes) {
  runShell(
      "cd " + at("/") + " && mkdir -p s/d && head -c 3000000 /dev/urandom > s/d/big &&" +
      " : > s/empty && ln -s d/big s/link && chmod 751 s/d && touch -d 2001-01-01 s/d s/d/big");
  ASSERT_TRUE(fm.copyItem(at("/s"), at("/c")));
  const std::string list = "find . -printf '%p %m %s %T@ %l\\n' | sort";
  EXPECT_EQ(runShell("cd " + at("/s") + " && touch -d 2001-01-01 . && " + list).output,
            runShell("cd " + at("/c") + " && touch -d 2001-01-01 . && " + list).output);
  EXPECT_EQ(runShell("diff -r " + at("/s") + " " + at("/c")).status, 0);
}

TEST_F(LocalFileManagerTest, AFailedCopyLeavesNothingBehind) {
  runShell("cd " + at("/") + " && mkdir s && echo x > s/a && mkfifo s/pipe");
  EXPECT_FALSE(fm.copyItem(at("/s"), at("/c")));
  EXPECT_FALSE(exists(at("/c")));
}

TEST_F(LocalFileManagerTest, ACopyOntoSomethingFailsAndLeavesItAlone) {
  writeFile(at("/s"), "source");
  writeFile(at("/d"), "destination");
  EXPECT_FALSE(fm.copyItem(at("/s"), at("/d")));
  EXPECT_EQ(contentOf(at("/d")), "destination");
  ASSERT_EQ(symlink("nowhere", at("/link").c_str()), 0);
  EXPECT_FALSE(fm.copyItem(at("/s"), at("/link")));
  EXPECT_FALSE(exists(at("/nowhere")));
}

TEST_F(LocalFileManagerTest, AnExistingDirectoryKeepsItsAttributes) {
  ASSERT_EQ(mkdir(at("/d").c_str(), 0700), 0);
  AttributeChanges wide;
  wide.NSFilePosixPermissions = 0777;
  EXPECT_TRUE(fm.createDirectory(at("/d"), wide));
  EXPECT_EQ(statusOf(at("/d")).st_mode & 07777, 0700U);
}

}  // namespace
}  // namespace kelvane::tests
