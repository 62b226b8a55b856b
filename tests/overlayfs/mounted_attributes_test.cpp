// SPDX-License-Identifier: GPL-2.0-or-later
// Attributes, capacity, refusals and their error numbers.
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>

#include "overlayfs/mounted_volume.h"

namespace kelvane::tests {
namespace {

// errno of a system call that has just returned `status`.
int errnoOf(int status) {
  return status < 0 ? errno : 0;
}

class MountedAttributes : public MountedOverlay {
 protected:
  void SetUp() override {
    MountedOverlay::SetUp();
    if (IsSkipped()) return;
    trees.addDiscFile("/file", "disc");
    trees.addDiscFile("/docs/a", "disc a");
    trees.addDiscLink("/link", std::string(trees.overlay().size(), '-') + "docs/größe");
    trees.addDiscLink("/short", "x");
  }
  struct statvfs capacity() {
    struct statvfs result = {};
    EXPECT_EQ(statvfs(volume->path().c_str(), &result), 0);
    return result;
  }
  static uint64_t freeBytes(const struct statvfs& capacity) {
    return capacity.f_bavail * capacity.f_frsize;
  }
};

TEST_F(MountedAttributes, CapacityAndFreeSpaceAreTheDiscs) {
  mount({700, 100});
  EXPECT_EQ(capacity().f_blocks * capacity().f_frsize, 734003200U);
  EXPECT_EQ(freeBytes(capacity()), 629145600U);
  EXPECT_EQ(capacity().f_files, 0U);
  EXPECT_EQ(capacity().f_ffree, 10000000U);
  EXPECT_EQ(capacity().f_namemax, 255U);
  sh("head -c 1048576 /dev/zero > new");
  EXPECT_EQ(freeBytes(capacity()), 628097024U);
}

TEST_F(MountedAttributes, AFullDiscRefusesNewFilesAndWritesAndShowsNoFreeSpace) {
  mount({2, 1});
  sh("head -c 1048576 /dev/zero > filler");
  EXPECT_EQ(freeBytes(capacity()), 0U);
  EXPECT_NE(shFails("echo x > new").find("No space left"), std::string::npos);
  EXPECT_NE(shFails("/bin/echo x >> filler").find("No space left"), std::string::npos);
  EXPECT_FALSE(exists(at("/new")));
  sh("rm filler && echo x > new");
}

TEST_F(MountedAttributes, AWriteBeyondTheSpaceLeftIsAcceptedAndTheDeficitShowsAsNothingFree) {
  mount({2, 1});
  const int file = open(at("/big").c_str(), O_WRONLY | O_CREAT, 0644);
  ASSERT_GE(file, 0);
  const std::string most((1 << 20) - 5000, 'x');
  ASSERT_EQ(write(file, most.data(), most.size()), static_cast<ssize_t>(most.size()));
  const std::string more(100000, 'y');
  EXPECT_EQ(write(file, more.data(), more.size()), static_cast<ssize_t>(more.size()));
  EXPECT_EQ(freeBytes(capacity()), 0U);
  EXPECT_EQ(write(file, "z", 1), -1);
  EXPECT_EQ(errno, ENOSPC);
  close(file);
}

TEST_F(MountedAttributes, DiscItemsLookWritableAndLinksAreAsLongAsTheirText) {
  mount();
  EXPECT_EQ(statusOf(at("/file")).st_mode & 07777, 0666U);
  EXPECT_EQ(statusOf(at("/docs")).st_mode & 07777, 0777U);
  EXPECT_EQ(sh("readlink link"), "docs/größe\n");
  EXPECT_EQ(statusOf(at("/link")).st_size, static_cast<off_t>(std::string("docs/größe").size()));
  EXPECT_EQ(statusOf(at("/short")).st_size, 0);
}

TEST_F(MountedAttributes, AttributesOfAFileThatOnlyTheDiscHasCannotBeChanged) {
  mount();
  EXPECT_EQ(errnoOf(chmod(at("/file").c_str(), 0600)), EROFS);
  const timespec times[2] = {{1, 0}, {1, 0}};
  EXPECT_EQ(errnoOf(utimensat(AT_FDCWD, at("/file").c_str(), times, 0)), EROFS);
  EXPECT_EQ(errnoOf(truncate(at("/file").c_str(), 2)), EROFS);
  EXPECT_EQ(errnoOf(chmod(at("/file").c_str(), 0666)), 0);
  EXPECT_EQ(errnoOf(truncate(at("/file").c_str(), 4)), 0);
  EXPECT_FALSE(exists(trees.overlay() + "/file"));
}

TEST_F(MountedAttributes, TruncationToNothingOfADiscFileMakesANewOne) {
  mount();
  EXPECT_EQ(errnoOf(truncate(at("/file").c_str(), 0)), 0);
  EXPECT_EQ(contentOf(at("/file")), "");
  EXPECT_EQ(statusOf(at("/file")).st_size, 0);
  EXPECT_EQ(contentOf(trees.disc() + "/file"), "disc");
}

TEST_F(MountedAttributes, AttributesOfADirectoryOfTheDiscAreShadowed) {
  mount();
  sh("ls -l . docs >/dev/null && touch -d '2001-02-03 00:00:00 UTC' docs && chmod 750 docs");
  EXPECT_EQ(statusOf(at("/docs")).st_mode & 07777, 0750U);
  EXPECT_EQ(statusOf(at("/docs")).st_mtim.tv_sec, 981158400);
  EXPECT_EQ(sh("ls docs"), "a\n");
  EXPECT_EQ(contentOf(at("/docs/a")), "disc a");
}

TEST_F(MountedAttributes, AttributesOfOverlayItemsAreKept) {
  mount();
  sh("echo x > new && chmod 4711 new && touch -d '2001-02-03 00:00:00 UTC' new && mkdir -m 1711 d");
  EXPECT_EQ(statusOf(at("/new")).st_mode & 07777, 04711U);
  EXPECT_EQ(statusOf(at("/new")).st_mtim.tv_sec, 981158400);
  EXPECT_EQ(statusOf(at("/d")).st_mode & 07777, 01711U);
  sh("ln -s nowhere l && touch -h -d '2001-02-03 00:00:00 UTC' l");
  EXPECT_EQ(statusOf(at("/l")).st_mtim.tv_sec, 981158400);
}

TEST_F(MountedAttributes, TheRootShowsItsNewModeAndItsFolderStaysClosed) {
  mount();
  EXPECT_EQ(errnoOf(chmod(volume->path().c_str(), 0755)), 0);
  EXPECT_EQ(statusOf(volume->path()).st_mode & 07777, 0755U);
  EXPECT_EQ(statusOf(trees.overlay()).st_mode & 07777, 0700U);
}

TEST_F(MountedAttributes, FilesWithoutWritePermissionCanBeRead) {
  mount();
  sh("echo sealed > s && chmod 444 s && cat s");
  EXPECT_EQ(contentOf(at("/s")), "sealed\n");
}

TEST_F(MountedAttributes, WhatTheVolumeCannotHoldIsRefusedCleanly) {
  mount();
  sh("echo x > new");
  EXPECT_EQ(errnoOf(link(at("/new").c_str(), at("/hard").c_str())), EPERM);
  EXPECT_EQ(errnoOf(mkfifo(at("/pipe").c_str(), 0600)), EPERM);
  EXPECT_EQ(errnoOf(mknod(at("/plain").c_str(), S_IFREG | 0640, 0)), 0);
  EXPECT_EQ(statusOf(at("/plain")).st_mode, S_IFREG | 0640U);
  EXPECT_EQ(errnoOf(setxattr(at("/new").c_str(), "user.dummy", "", 0, 0)), EOPNOTSUPP);
  char value[8];
  EXPECT_EQ(errnoOf(static_cast<int>(getxattr(at("/new").c_str(), "user.d", value, 8))),
            EOPNOTSUPP);
  EXPECT_EQ(errnoOf(static_cast<int>(listxattr(at("/new").c_str(), value, 8))), EOPNOTSUPP);
  EXPECT_EQ(errnoOf(removexattr(at("/new").c_str(), "user.dummy")), EOPNOTSUPP);
}

TEST_F(MountedAttributes, ErrorNumbersAreThoseThatProgramsExpect) {
  mount();
  ASSERT_EQ(mkdir(at("/dir").c_str(), 0755), 0);
  writeFile(at("/dir/x"), "x");
  EXPECT_EQ(errnoOf(open(at("/nowhere").c_str(), O_RDONLY)), ENOENT);
  EXPECT_EQ(errnoOf(unlink(at("/nowhere").c_str())), ENOENT);
  EXPECT_EQ(errnoOf(unlink(at("/dir").c_str())), EISDIR);
  EXPECT_EQ(errnoOf(rmdir(at("/dir").c_str())), ENOTEMPTY);
  EXPECT_EQ(errnoOf(rmdir(at("/docs").c_str())), ENOTEMPTY);
  EXPECT_EQ(errnoOf(rmdir(at("/file").c_str())), ENOTDIR);
  EXPECT_EQ(errnoOf(mkdir(at("/docs").c_str(), 0755)), EEXIST);
  EXPECT_EQ(errnoOf(symlink("x", at("/file").c_str())), EEXIST);
  EXPECT_EQ(errnoOf(open(at("/file").c_str(), O_WRONLY | O_CREAT | O_EXCL, 0644)), EEXIST);
  EXPECT_EQ(errnoOf(open(at("/file").c_str(), O_RDWR)), EROFS);
  EXPECT_EQ(errnoOf(open(at("/file").c_str(), O_WRONLY | O_APPEND)), EROFS);
  EXPECT_EQ(errnoOf(open(at("/dir").c_str(), O_WRONLY)), EISDIR);
  EXPECT_EQ(errnoOf(open(at("/file/below").c_str(), O_RDONLY)), ENOTDIR);
  EXPECT_EQ(errnoOf(mkdir(at("/" + std::string(256, 'x')).c_str(), 0755)), ENAMETOOLONG);
}

TEST_F(MountedAttributes, PathsTooLongForTheFolderBehindAreRefused) {
  mount();
  const std::string script =
      "n=$(printf '%0200d' 0); i=0; while mkdir $n 2>/dev/null && cd $n; do i=$((i+1));"
      " [ $i -lt 40 ] || exit 9; done; mkdir $n 2>&1 | grep -o 'File name too long'";
  EXPECT_EQ(sh(script), "File name too long\n");
}

TEST_F(MountedAttributes, EmptyDirectoriesAreRemoved) {
  mount();
  sh("mkdir d && rmdir d && rm docs/a && rmdir docs");
  EXPECT_EQ(sh("ls -A"), "file\nlink\nshort\n");
}

TEST_F(MountedAttributes, TheMountTableShowsTheVolumesName) {
  mount();
  const std::string line = runShell("grep " + trees.root() + " /proc/self/mounts").output;
  EXPECT_EQ(line.find("Holiday,\\0402024 "), 0U) << line;
  EXPECT_NE(line.find(" fuse.kelvanefs "), std::string::npos) << line;
  EXPECT_NE(line.find("nosuid,nodev"), std::string::npos) << line;
}

TEST_F(MountedAttributes, TrashesIsAnEmptyDirectoryThatIsNotListed) {
  mount();
  EXPECT_TRUE(S_ISDIR(statusOf(at("/.Trashes")).st_mode));
  EXPECT_TRUE(S_ISDIR(statusOf(at("/.Trashes/501")).st_mode));
  EXPECT_FALSE(exists(at("/.Trashes/501/x")));
  EXPECT_EQ(sh("ls -A"), "docs\nfile\nlink\nshort\n");
}

TEST_F(MountedAttributes, WhateverBeginsWithTrashesIsThereToo) {
  mount();
  EXPECT_TRUE(S_ISDIR(statusOf(at("/.TrashesX")).st_mode));
  EXPECT_EQ(errnoOf(mkdir(at("/.TrashesX").c_str(), 0755)), EEXIST);
  EXPECT_FALSE(exists(at("/.trashes")));
  EXPECT_FALSE(exists(at("/docs/.Trashes")));
}

TEST_F(MountedAttributes, TheDiscsNamesAreListedInTheDiscsOrderAndNewOnesBehind) {
  for (const char* name : {"/zeta", "/Alpha", "/mid", "/beta"}) trees.addDiscFile(name, "x");
  mount();
  const std::string order = runShell("ls -AU '" + trees.disc() + "'").output;
  EXPECT_EQ(sh("ls -AU"), order);
  sh(": > aaa; cp zeta copy && cat copy > zeta");
  const std::string listed = sh("ls -AU");
  EXPECT_EQ(listed.substr(0, order.size()), order) << "what is in both trees keeps its place";
  EXPECT_EQ(listed.size(), order.size() + std::string("aaa\ncopy\n").size());
}

}  // namespace
}  // namespace kelvane::tests
