// SPDX-License-Identifier: GPL-2.0-or-later
// What programs get where the delegate fails, with a number and without.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>

#include "platform/userfs/gm_user_file_system.h"
#include "userfs/memory_delegate.h"
#include "userfs/mount_watcher.h"

namespace kelvane::tests {
namespace {

int errnoOf(ssize_t status) {
  return status < 0 ? errno : 0;
}

class DelegateFailures : public testing::Test {
 protected:
  void SetUp() override {
    std::string reason;
    if (!GMUserFileSystem::isAvailable(&reason)) GTEST_SKIP() << reason;
    delegate.add("/file", "0123456789");
    delegate.add("/other", "other");
    delegate.add("/beneath", "read-only", ItemOrigin::ReadOnly);
    delegate.addDirectory("/directory");
    delegate.createSymbolicLinkAtPath("/link", "file", nullptr);
    fileSystem = std::make_unique<GMUserFileSystem>(&delegate, false);
    watcher = std::make_unique<MountWatcher>(fileSystem.get());
    fileSystem->mountAtPath(mountPoint, {});
    ASSERT_TRUE(watcher->waitFor(kGMUserFileSystemDidMount));
  }
  std::string at(const std::string& path) const { return mountPoint + path; }

  TemporaryFolder folder;
  const std::string mountPoint = folder.path() + "/volume";
  MemoryDelegate delegate;
  std::unique_ptr<GMUserFileSystem> fileSystem;
  std::unique_ptr<MountWatcher> watcher;
};

TEST_F(DelegateFailures, ReadsThatClaimTooMuchAreClippedAtTheFilesSize) {
  const int file = open(at("/file").c_str(), O_RDONLY);
  ASSERT_GE(file, 0);
  std::string buffer(4096, '?');
  EXPECT_EQ(pread(file, buffer.data(), 4096, 0), 10);
  EXPECT_EQ(buffer.substr(0, 11), "0123456789?");
  EXPECT_EQ(pread(file, buffer.data(), 4096, 8), 2);
  EXPECT_EQ(pread(file, buffer.data(), 4096, 50), 0);
  close(file);
}

TEST_F(DelegateFailures, ContentWithoutDescriptorsIsWrittenAndTruncated) {
  const int file = open(at("/new").c_str(), O_RDWR | O_CREAT, 0600);
  ASSERT_GE(file, 0);
  EXPECT_EQ(pwrite(file, "hello", 5, 3), 5);
  EXPECT_EQ(ftruncate(file, 6), 0);
  EXPECT_EQ(fsync(file), 0);
  EXPECT_EQ(errnoOf(fallocate(file, 0, 0, 100)), EOPNOTSUPP);
  close(file);
  EXPECT_EQ(delegate.contentOfItem("/new"), std::string("\0\0\0hel", 6));
}

TEST_F(DelegateFailures, TheDelegatesOwnNumbersReachPrograms) {
  delegate.failsAll = true;
  delegate.failureNumber = EDQUOT;
  EXPECT_EQ(errnoOf(open(at("/file").c_str(), O_RDONLY)), EDQUOT);
  EXPECT_EQ(errnoOf(open(at("/new").c_str(), O_WRONLY | O_CREAT, 0600)), EDQUOT);
  EXPECT_EQ(errnoOf(mkdir(at("/made").c_str(), 0700)), EDQUOT);
  EXPECT_EQ(errnoOf(unlink(at("/file").c_str())), EDQUOT);
  EXPECT_EQ(errnoOf(rmdir(at("/directory").c_str())), EDQUOT);
  EXPECT_EQ(errnoOf(rename(at("/file").c_str(), at("/moved").c_str())), EDQUOT);
  EXPECT_EQ(errnoOf(symlink("x", at("/newlink").c_str())), EDQUOT);
  EXPECT_EQ(errnoOf(chmod(at("/file").c_str(), 0600)), EDQUOT);
  struct statvfs capacity = {};
  EXPECT_EQ(errnoOf(statvfs(mountPoint.c_str(), &capacity)), EDQUOT);
  delegate.failsAll = false;
}

TEST_F(DelegateFailures, WithoutANumberProgramsGetTheFileSystemsOwn) {
  delegate.failsAll = true;
  EXPECT_EQ(errnoOf(open(at("/file").c_str(), O_RDONLY)), EACCES);
  EXPECT_EQ(errnoOf(open(at("/new").c_str(), O_WRONLY | O_CREAT, 0600)), EIO);
  EXPECT_EQ(errnoOf(mkdir(at("/made").c_str(), 0700)), EIO);
  EXPECT_EQ(errnoOf(unlink(at("/file").c_str())), EIO);
  EXPECT_EQ(errnoOf(rename(at("/file").c_str(), at("/moved").c_str())), EIO);
  EXPECT_EQ(errnoOf(symlink("x", at("/newlink").c_str())), EIO);
  EXPECT_EQ(errnoOf(chmod(at("/file").c_str(), 0600)), EPERM);
  struct statvfs capacity = {};
  EXPECT_EQ(errnoOf(statvfs(mountPoint.c_str(), &capacity)), EIO);
  delegate.failsAll = false;
}

TEST_F(DelegateFailures, WritesAndReadsOfAnOpenFileFailWithTheNumber) {
  const int file = open(at("/file").c_str(), O_RDWR);
  ASSERT_GE(file, 0);
  delegate.failsAll = true;
  EXPECT_EQ(errnoOf(pwrite(file, "x", 1, 0)), EIO);
  delegate.failureNumber = ENOSPC;
  EXPECT_EQ(errnoOf(pwrite(file, "x", 1, 0)), ENOSPC);
  char byte = 0;
  delegate.failureNumber = EMEDIUMTYPE;
  EXPECT_NE(errnoOf(pread(file, &byte, 1, 0)), 0);
  delegate.failsAll = false;
  close(file);
}

TEST_F(DelegateFailures, AMoveThatSucceedsWithAnErrorSetHasFailed) {
  delegate.moveErrorWithSuccess = EXDEV;
  EXPECT_EQ(errnoOf(rename(at("/file").c_str(), at("/moved").c_str())), EXDEV);
  delegate.moveErrorWithSuccess = 0;
  EXPECT_EQ(access(at("/file").c_str(), F_OK), 0);
}

TEST_F(DelegateFailures, AReadOnlyItemRefusesWritersAndIsReplacedByTruncation) {
  EXPECT_EQ(errnoOf(open(at("/beneath").c_str(), O_RDWR)), EROFS);
  const int file = open(at("/beneath").c_str(), O_WRONLY | O_TRUNC);
  ASSERT_GE(file, 0);
  EXPECT_EQ(write(file, "new", 3), 3);
  close(file);
  EXPECT_EQ(delegate.contentOfItem("/beneath"), "new");
}

TEST_F(DelegateFailures, ExtendedAttributesGoToADelegateThatHasThem) {
  delegate.extendedAttributes = true;
  EXPECT_EQ(errnoOf(setxattr(at("/file").c_str(), "user.a", "value", 5, 0)), 0);
  char value[16] = {};
  EXPECT_EQ(getxattr(at("/file").c_str(), "user.a", value, sizeof(value)), 5);
  EXPECT_STREQ(value, "value");
  EXPECT_EQ(getxattr(at("/file").c_str(), "user.a", nullptr, 0), 5);
  EXPECT_EQ(errnoOf(getxattr(at("/file").c_str(), "user.a", value, 2)), ERANGE);
  EXPECT_EQ(errnoOf(getxattr(at("/file").c_str(), "user.b", value, 2)), ENODATA);
  EXPECT_EQ(listxattr(at("/file").c_str(), value, sizeof(value)), 7);
  EXPECT_STREQ(value, "user.a");
  EXPECT_EQ(errnoOf(removexattr(at("/file").c_str(), "user.a")), 0);
  EXPECT_EQ(errnoOf(removexattr(at("/file").c_str(), "user.a")), ENODATA);
}

TEST_F(DelegateFailures, EveryOpenFileIsReleasedOnce) {
  for (int round = 0; round < 100; ++round) close(open(at("/file").c_str(), O_RDONLY));
  for (int round = 0; round < 100; ++round) close(open(at("/n").c_str(), O_RDWR | O_CREAT, 0600));
  fileSystem->unmount();
  ASSERT_TRUE(watcher->waitFor(kGMUserFileSystemDidUnmount));
  EXPECT_EQ(delegate.openFiles, 0);
}

}  // namespace
}  // namespace kelvane::tests
