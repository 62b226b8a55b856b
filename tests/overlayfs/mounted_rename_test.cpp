// SPDX-License-Identifier: GPL-2.0-or-later
// rename(2) and mv on a mounted volume: what is replaced, refused, shown again, and never lost.
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "overlayfs/mounted_volume.h"

namespace kelvane::tests {
namespace {

class MountedRename : public MountedOverlay {
 protected:
  void SetUp() override {
    MountedOverlay::SetUp();
    if (IsSkipped()) return;
    trees.addDiscFile("/disc1", "disc one");
    trees.addDiscFile("/disc2", "disc two, longer");
    trees.addDiscFile("/docs/a", "disc a");
    trees.addDiscFile("/docs/b", "disc b");
    trees.addDiscFile("/docs/sub/c", "disc c");
    trees.addDiscDirectory("/empty");
    trees.addDiscLink("/disclink", std::string(trees.overlay().size(), '-') + "docs/a");
    mount();
  }

  /// errno of a rename on the volume, or 0.
  int errnoOfRename(const std::string& from, const std::string& to, unsigned flags = 0) {
    const int status = renameat2(AT_FDCWD, at(from).c_str(), AT_FDCWD, at(to).c_str(), flags);
    return status == 0 ? 0 : errno;
  }
  void put(const std::string& path, const std::string& content) { writeFile(at(path), content); }
  void expectFile(const std::string& path, const std::string& content) {
    EXPECT_EQ(contentOf(at(path)), content) << path;
    EXPECT_EQ(statusOf(at(path)).st_size, static_cast<off_t>(content.size())) << path;
  }
  /// No name that the file system made for itself may be left.
  void expectNoTemporaryNames() {
    EXPECT_EQ(runShell("find " + trees.overlay() + " -name '.kelvanefs*'").output, "");
  }
};

TEST_F(MountedRename, ADiscFileOverADiscFile) {
  ASSERT_EQ(errnoOfRename("/disc1", "/disc2"), 0);
  expectFile("/disc2", "disc one");
  EXPECT_FALSE(exists(at("/disc1")));
}

TEST_F(MountedRename, ADiscFileOverAnOverlayFile) {
  put("/new", "an overlay file");
  ASSERT_EQ(errnoOfRename("/disc1", "/new"), 0);
  expectFile("/new", "disc one");
  EXPECT_FALSE(exists(at("/disc1")));
  expectNoTemporaryNames();
}

TEST_F(MountedRename, ADiscFileOverAnOverlayFileThatShadowsADiscFile) {
  put("/disc2", "changed");
  ASSERT_EQ(errnoOfRename("/disc1", "/disc2"), 0);
  expectFile("/disc2", "disc one");
  ASSERT_EQ(unlink(at("/disc2").c_str()), 0);
  EXPECT_FALSE(exists(at("/disc2")));
}

TEST_F(MountedRename, AnOverlayFileOverADiscFileAndOverAnOverlayFile) {
  put("/new", "new");
  ASSERT_EQ(errnoOfRename("/new", "/disc1"), 0);
  expectFile("/disc1", "new");
  put("/newer", "newer");
  ASSERT_EQ(errnoOfRename("/newer", "/disc1"), 0);
  expectFile("/disc1", "newer");
  EXPECT_FALSE(exists(at("/new")));
}

TEST_F(MountedRename, TheDiscsVersionOfARenamedOverlayFileIsSeenAtOnce) {
  put("/disc1", "changed");
  expectFile("/disc1", "changed");
  ASSERT_EQ(errnoOfRename("/disc1", "/elsewhere"), 0);
  expectFile("/elsewhere", "changed");
  expectFile("/disc1", "disc one");
  EXPECT_NE(statusOf(at("/disc1")).st_ino, statusOf(at("/elsewhere")).st_ino);
}

TEST_F(MountedRename, BetweenDirectories) {
  put("/docs/new", "new");
  ASSERT_EQ(errnoOfRename("/docs/new", "/empty/new"), 0);
  ASSERT_EQ(errnoOfRename("/docs/a", "/empty/a"), 0);
  expectFile("/empty/new", "new");
  expectFile("/empty/a", "disc a");
  EXPECT_EQ(sh("ls docs"), "b\nsub\n");
  EXPECT_EQ(sh("ls empty"), "a\nnew\n");
}

TEST_F(MountedRename, ADiscDirectoryMovesWithAllBelowIt) {
  sh("cat docs/sub/c docs/a >/dev/null && ! stat docs/nothing 2>/dev/null");
  ASSERT_EQ(errnoOfRename("/docs", "/moved"), 0);
  EXPECT_EQ(sh("cd moved && find . | sort"), ".\n./a\n./b\n./sub\n./sub/c\n");
  expectFile("/moved/sub/c", "disc c");
  EXPECT_FALSE(exists(at("/docs")));
  sh("echo more >> moved/sub/c");
  expectFile("/moved/sub/c", "disc cmore\n");
}

TEST_F(MountedRename, WhatWasDeletedInADiscDirectoryDoesNotComeBackByItsMove) {
  sh("rm docs/a && rm -r docs/sub && mv docs moved");
  EXPECT_EQ(sh("cd moved && find . | sort"), ".\n./b\n");
}

TEST_F(MountedRename, ADirectoryPutInThePlaceOfADeletedOneKeepsItsContents) {
  sh("mkdir fresh && echo 1 > fresh/a && echo 2 > fresh/b && mkdir fresh/sub && echo 3 > "
     "fresh/sub/c");
  sh("rm -r docs && mv fresh docs");
  EXPECT_EQ(sh("cat docs/a docs/b docs/sub/c"), "1\n2\n3\n");
  ASSERT_TRUE(volume->unmountAndWait());
  EXPECT_EQ(contentOf(trees.overlay() + "/docs/a"), "1\n");
  EXPECT_EQ(contentOf(trees.overlay() + "/docs/sub/c"), "3\n");
  EXPECT_EQ(contentOf(trees.hideListFile()), "");
}

TEST_F(MountedRename, ADiscDirectoryPutInThePlaceOfADeletedOneKeepsItsContents) {
  sh("rm docs/a && rm docs/b && rm -r docs/sub && rmdir docs && mkdir other && rmdir other");
  sh("mkdir twin && echo x > twin/a && mv twin docs && cat docs/a");
  EXPECT_EQ(sh("ls docs"), "a\n");
}

TEST_F(MountedRename, OfAMergedDirectoryTheDiscsPartIsSeenAtOnceWhereItWas) {
  sh("ls -lR . >/dev/null; ! stat docs/fresh/x 2>/dev/null; echo new > docs/new; ls -l docs");
  ASSERT_EQ(errnoOfRename("/docs", "/moved"), 0);
  EXPECT_FALSE(exists(at("/moved/a")));
  EXPECT_EQ(sh("ls moved"), "new\n");
  EXPECT_EQ(sh("ls docs"), "a\nb\nsub\n");
  expectFile("/docs/a", "disc a");
  expectFile("/moved/new", "new\n");
}

TEST_F(MountedRename, OntoAnEmptyDirectory) {
  put("/docs/new", "new");
  ASSERT_EQ(mkdir(at("/made").c_str(), 0755), 0);
  ASSERT_EQ(errnoOfRename("/made", "/empty"), 0);
  ASSERT_EQ(mkdir(at("/made2").c_str(), 0755), 0);
  put("/made2/x", "x");
  ASSERT_EQ(errnoOfRename("/made2", "/empty"), 0);
  expectFile("/empty/x", "x");
  ASSERT_EQ(mkdir(at("/made3").c_str(), 0755), 0);
  ASSERT_EQ(errnoOfRename("/docs/sub", "/made3"), 0);
  expectFile("/made3/c", "disc c");
  expectNoTemporaryNames();
}

TEST_F(MountedRename, WhatRenameRefuses) {
  put("/file", "file");
  ASSERT_EQ(mkdir(at("/dir").c_str(), 0755), 0);
  put("/dir/x", "x");
  EXPECT_EQ(errnoOfRename("/nowhere", "/x"), ENOENT);
  EXPECT_EQ(errnoOfRename("/dir", "/docs"), ENOTEMPTY);
  EXPECT_EQ(errnoOfRename("/empty", "/dir"), ENOTEMPTY);
  EXPECT_EQ(errnoOfRename("/file", "/empty"), EISDIR);
  EXPECT_EQ(errnoOfRename("/empty", "/file"), ENOTDIR);
  EXPECT_EQ(errnoOfRename("/docs", "/docs/sub/docs"), EINVAL);
  EXPECT_EQ(errnoOfRename("/docs/sub", "/docs"), ENOTEMPTY);
  EXPECT_EQ(errnoOfRename("/file", "/disc1", RENAME_NOREPLACE), EEXIST);
  EXPECT_EQ(errnoOfRename("/file", "/disc1", RENAME_EXCHANGE), EINVAL);
  EXPECT_EQ(errnoOfRename("/file", "/" + std::string(256, 'x')), ENAMETOOLONG);
  EXPECT_EQ(errnoOfRename("/file", "/file"), 0);
  EXPECT_EQ(errnoOfRename("/disc1", "/free", RENAME_NOREPLACE), 0);
  expectFile("/file", "file");
  expectFile("/dir/x", "x");
}

TEST_F(MountedRename, LinksAreRenamedWhereverTheyLead) {
  sh("ln -s nowhere broken && ln -s docs/a good");
  ASSERT_EQ(errnoOfRename("/broken", "/docs/broken"), 0);
  EXPECT_EQ(sh("readlink docs/broken"), "nowhere\n");
  ASSERT_EQ(errnoOfRename("/good", "/disc1"), 0);
  EXPECT_EQ(sh("readlink disc1"), "docs/a\n");
  expectNoTemporaryNames();
}

TEST_F(MountedRename, ALinkReplacesFilesAndLinksOfTheOverlayAndTheDisc) {
  sh("ln -s one l1 && ln -s two l2 && echo f > file && ln -s three l3 && ln -s four l4");
  ASSERT_EQ(errnoOfRename("/l1", "/l2"), 0);
  EXPECT_EQ(sh("readlink l2"), "one\n");
  ASSERT_EQ(errnoOfRename("/l2", "/file"), 0);
  EXPECT_EQ(sh("readlink file"), "one\n");
  ASSERT_EQ(errnoOfRename("/l3", "/disc1"), 0);
  ASSERT_EQ(errnoOfRename("/l4", "/disc1"), 0);
  EXPECT_EQ(sh("readlink disc1"), "four\n");
  EXPECT_FALSE(exists(at("/l4")));
  expectNoTemporaryNames();
}

TEST_F(MountedRename, ADiscLinkKeepsTheTextThatTheVolumeShows) {
  EXPECT_EQ(sh("readlink disclink"), "docs/a\n");
  ASSERT_EQ(errnoOfRename("/disclink", "/docs/link"), 0);
  EXPECT_EQ(sh("readlink docs/link"), "docs/a\n");
  EXPECT_FALSE(exists(at("/disclink")));
}

TEST_F(MountedRename, AFileReplacesALink) {
  sh("ln -s nowhere link && echo new > file && mv file link && cat link");
  expectFile("/link", "new\n");
  sh("ln -s nowhere link2");
  ASSERT_EQ(errnoOfRename("/disc2", "/link2"), 0);
  expectFile("/link2", "disc two, longer");
}

TEST_F(MountedRename, ADiscLinkOverAnOverlayFileLeavesNothingBeside) {
  chmod(trees.disc().c_str(), 0755);
  trees.addDiscLink("/leading", "disc1");
  chmod(trees.disc().c_str(), 0555);
  put("/new", "new");
  ASSERT_EQ(errnoOfRename("/leading", "/new"), 0);
  EXPECT_TRUE(S_ISLNK(statusOf(at("/new")).st_mode));
  EXPECT_FALSE(exists(at("/leading")));
  expectNoTemporaryNames();
}

TEST_F(MountedRename, ALinkAtADeletedPathIsSeen) {
  sh("rm disc1 && ln -s disc2 disc1");
  EXPECT_EQ(sh("readlink disc1; cat disc1"), "disc2\ndisc two, longer");
  ASSERT_TRUE(volume->unmountAndWait());
  EXPECT_EQ(contentOf(trees.hideListFile()), "");
}

// Such a link leads nowhere in the writable tree, and the disc has a file of its name.
TEST_F(MountedRename, ALinkInThePlaceOfADiscFileIsMovedAndNotThatFile) {
  ASSERT_EQ(unlink(at("/disc1").c_str()), 0);
  ASSERT_EQ(symlink("elsewhere", at("/disc1").c_str()), 0);
  ASSERT_EQ(errnoOfRename("/disc1", "/moved"), 0);
  EXPECT_EQ(sh("readlink moved"), "elsewhere\n");
  EXPECT_FALSE(exists(at("/disc1")));
}

// The disc's links are stored without the overlay directory's path, so this one shows no text.
TEST_F(MountedRename, ALinkOfTheDiscThatStandsOverADiscFileIsMovedAndNotThatFile) {
  chmod(trees.disc().c_str(), 0755);
  trees.addDiscLink("/leading", "disc1");
  chmod(trees.disc().c_str(), 0555);
  ASSERT_EQ(errnoOfRename("/leading", "/docs/a"), 0);
  ASSERT_EQ(errnoOfRename("/docs/a", "/moved"), 0);
  EXPECT_TRUE(S_ISLNK(statusOf(at("/moved")).st_mode));
  EXPECT_FALSE(exists(at("/docs/a")));
}

TEST_F(MountedRename, ALinkInADirectoryOfTheDisc) {
  sh("ln -s ../../disc1 docs/sub/link && cat docs/sub/link");
  EXPECT_EQ(statusOf(at("/docs/sub/link")).st_size, 11);
}

TEST_F(MountedRename, MovingBelowTrashesDeletes) {
  put("/file", "file");
  sh("mv file .Trashes/501/x && mv disc1 .Trashes/501/y && mv docs .Trashes/501/z");
  EXPECT_EQ(sh("ls -A"), "disc2\ndisclink\nempty\n");
  EXPECT_FALSE(exists(at("/.Trashes/501/x")));
  EXPECT_FALSE(exists(at("/.Trashes/501/z")));
}

TEST_F(MountedRename, AnOpenFileFollowsItsItemThroughAMoveFromTheDisc) {
  const int reader = open(at("/disc1").c_str(), O_RDONLY);
  ASSERT_GE(reader, 0);
  ASSERT_EQ(errnoOfRename("/disc1", "/moved"), 0);
  sh("printf ' and more' >> moved");
  char buffer[64] = {};
  EXPECT_EQ(pread(reader, buffer, sizeof(buffer), 0), 17);
  EXPECT_STREQ(buffer, "disc one and more");
  close(reader);
}

TEST_F(MountedRename, WhatStaysBehindBelowAMovedMergedDirectoryIsNotListedThere) {
  sh("echo new > docs/sub/new && ls -R docs >/dev/null && mv docs moved");
  EXPECT_EQ(sh("ls moved/sub"), "new\n");
}

TEST_F(MountedRename, AnOpenFileFollowsItsEmptiedItemThroughItsRemoval) {
  const int reader = open(at("/disc1").c_str(), O_RDONLY);
  ASSERT_GE(reader, 0);
  sh("printf new > disc1 && rm disc1");
  char buffer[64] = {};
  EXPECT_EQ(pread(reader, buffer, sizeof(buffer), 0), 3);
  EXPECT_STREQ(buffer, "new");
  close(reader);
}

TEST_F(MountedRename, TheDirectoriesAboveOneWhoseModeChangesShowTheirNewModesAtOnce) {
  EXPECT_EQ(statusOf(at("/docs")).st_mode & 07777, 0777U);
  ASSERT_EQ(chmod(at("/docs/sub").c_str(), 0711), 0);
  EXPECT_EQ(statusOf(at("/docs")).st_mode & 07777,
            statusOf(trees.overlay() + "/docs").st_mode & 07777);
}

TEST_F(MountedRename, AFileThatIsReplacedWhileOpenCanStillBeReadAndWritten) {
  put("/old", "old content");
  put("/new", "new");
  const int file = open(at("/old").c_str(), O_RDWR);
  ASSERT_GE(file, 0);
  ASSERT_EQ(errnoOfRename("/new", "/old"), 0);
  char buffer[64] = {};
  EXPECT_EQ(pread(file, buffer, sizeof(buffer), 0), 11);
  EXPECT_STREQ(buffer, "old content");
  EXPECT_EQ(pwrite(file, "OLD", 3, 0), 3);
  EXPECT_EQ(ftruncate(file, 5), 0);
  struct stat status = {};
  EXPECT_EQ(fstat(file, &status), 0);
  EXPECT_EQ(status.st_size, 5);
  EXPECT_EQ(status.st_nlink, 0U);
  close(file);
  expectFile("/old", "new");
}

TEST_F(MountedRename, NothingIsLostWhereTheSecondStepFails) {
  // A directory of the overlay that is not empty below, hidden from the listing by its own removal,
  // cannot be had through the volume; a read-only overlay makes every step fail instead.
  if (geteuid() == 0) GTEST_SKIP() << "permissions do not stop root";
  put("/new", "overlay");
  chmod(trees.overlay().c_str(), 0500);
  EXPECT_NE(errnoOfRename("/disc1", "/new"), 0);
  chmod(trees.overlay().c_str(), 0700);
  expectFile("/new", "overlay");
  expectFile("/disc1", "disc one");
}

}  // namespace
}  // namespace kelvane::tests
