// SPDX-License-Identifier: GPL-2.0-or-later
// Mounting and unmounting: notifications, threads, mount points, and who ends what.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <future>
#include <thread>

#include "platform/userfs/gm_user_file_system.h"
#include "platform/userfs/mount_point.h"
#include "userfs/memory_delegate.h"
#include "userfs/mount_watcher.h"

namespace kelvane::tests {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

TEST(Availability, SaysWhatIsMissing) {
  std::string reason;
  const int device = open("/dev/fuse", O_RDWR | O_CLOEXEC);
  const bool hasHelper = geteuid() == 0 || !userfs::mountHelperPath().empty();
  EXPECT_EQ(GMUserFileSystem::isAvailable(&reason), device >= 0 && hasHelper);
  EXPECT_EQ(reason.empty(), device >= 0 && hasHelper);
  if (device >= 0) close(device);
}

TEST(Availability, ADeviceThatCannotBeOpenedIsNamed) {
  rlimit before = {};
  ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
  const rlimit none = {0, before.rlim_max};
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
  std::string reason;
  const bool isAvailable = GMUserFileSystem::isAvailable(&reason);
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &before), 0);
  EXPECT_FALSE(isAvailable);
  EXPECT_THAT(reason, HasSubstr("/dev/fuse cannot be opened"));
}

class MountLifecycle : public testing::Test {
 protected:
  void SetUp() override {
    std::string reason;
    if (!GMUserFileSystem::isAvailable(&reason)) GTEST_SKIP() << reason;
    delegate.add("/file", "text");
    fileSystem = std::make_unique<GMUserFileSystem>(&delegate, false);
    watcher = std::make_unique<MountWatcher>(fileSystem.get());
  }
  void mount() {
    fileSystem->mountAtPath(mountPoint, {"volname=Test", "local", "-f"});
    ASSERT_TRUE(watcher->waitFor(kGMUserFileSystemDidMount));
  }

  TemporaryFolder folder;
  const std::string mountPoint = folder.path() + "/volume";
  MemoryDelegate delegate;
  std::unique_ptr<GMUserFileSystem> fileSystem;
  std::unique_ptr<MountWatcher> watcher;
};

TEST_F(MountLifecycle, TheMountPointIsMadeAndRemovedAgain) {
  mount();
  EXPECT_TRUE(isMounted(mountPoint));
  EXPECT_EQ(access((mountPoint + "/file").c_str(), R_OK), 0);
  EXPECT_EQ(fileSystem->unmount(), UnmountResult::Started);
  ASSERT_TRUE(watcher->waitFor(kGMUserFileSystemDidUnmount));
  EXPECT_FALSE(isMounted(mountPoint));
  EXPECT_NE(access(mountPoint.c_str(), F_OK), 0);
}

TEST_F(MountLifecycle, AMountPointThatWasThereStays) {
  ASSERT_EQ(mkdir(mountPoint.c_str(), 0755), 0);
  mount();
  EXPECT_EQ(fileSystem->unmount(), UnmountResult::Started);
  ASSERT_TRUE(watcher->waitFor(kGMUserFileSystemDidUnmount));
  EXPECT_EQ(access(mountPoint.c_str(), F_OK), 0);
}

TEST_F(MountLifecycle, TheVolumeHasGoneWhenTheUnmountIsAnnounced) {
  bool wasMounted = true;
  int willUnmountCalls = 0;
  watcher->onEvent = [&](const MountWatcher::Event& event) {
    if (event.name != kGMUserFileSystemDidUnmount) return;
    wasMounted = isMounted(mountPoint);
    willUnmountCalls = delegate.willUnmountCalls;
  };
  mount();
  EXPECT_EQ(delegate.willUnmountCalls, 0);
  fileSystem->unmount();
  ASSERT_TRUE(watcher->waitFor(kGMUserFileSystemDidUnmount));
  EXPECT_FALSE(wasMounted);
  EXPECT_EQ(willUnmountCalls, 1);
}

TEST_F(MountLifecycle, NotificationsComeOnceEachOnTheFileSystemsOwnThread) {
  mount();
  fileSystem->unmount();
  ASSERT_TRUE(watcher->waitFor(kGMUserFileSystemDidUnmount));
  EXPECT_THAT(watcher->names(),
              ElementsAre(kGMUserFileSystemDidMount, kGMUserFileSystemDidUnmount));
  EXPECT_EQ(watcher->events()[0].thread, watcher->events()[1].thread);
  EXPECT_NE(watcher->events()[0].thread, std::this_thread::get_id());
}

TEST_F(MountLifecycle, AnUnmountFromOutsideEndsItTheSameWay) {
  mount();
  EXPECT_EQ(userfs::unmountPath(mountPoint, userfs::UnmountMode::IfNotBusy),
            UnmountResult::Started);
  ASSERT_TRUE(watcher->waitFor(kGMUserFileSystemDidUnmount));
  EXPECT_EQ(delegate.willUnmountCalls, 1);
  EXPECT_NE(access(mountPoint.c_str(), F_OK), 0);
}

TEST_F(MountLifecycle, ABusyVolumeStaysAndWorksOn) {
  mount();
  const int file = open((mountPoint + "/file").c_str(), O_RDONLY | O_CLOEXEC);
  ASSERT_GE(file, 0);
  EXPECT_EQ(fileSystem->unmount(), UnmountResult::Busy);
  char buffer[8] = {};
  EXPECT_EQ(pread(file, buffer, sizeof(buffer), 0), 4);
  close(file);
  EXPECT_EQ(delegate.willUnmountCalls, 0);
  EXPECT_EQ(fileSystem->unmount(), UnmountResult::Started);
  ASSERT_TRUE(watcher->waitFor(kGMUserFileSystemDidUnmount));
}

TEST_F(MountLifecycle, ABusyVolumeCanBeTakenAway) {
  mount();
  const int file = open((mountPoint + "/file").c_str(), O_RDONLY | O_CLOEXEC);
  ASSERT_GE(file, 0);
  EXPECT_EQ(fileSystem->unmountLazily(), UnmountResult::Started);
  ASSERT_TRUE(watcher->waitFor(kGMUserFileSystemDidUnmount));
  EXPECT_FALSE(isMounted(mountPoint));
  EXPECT_EQ(delegate.willUnmountCalls, 1);
  EXPECT_EQ(delegate.openFiles, 0);
  close(file);
}

TEST_F(MountLifecycle, AVolumeIsTakenAwayWhileAProgramKeepsAsking) {
  mount();
  const int root = open(mountPoint.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  ASSERT_GE(root, 0);
  std::promise<void> hasAsked;
  std::thread program([root, &hasAsked] {
    // Another name each time: what is missing may be remembered by the kernel.
    for (int i = 0;; ++i) {
      const int missing = openat(root, std::to_string(i).c_str(), O_RDONLY | O_CLOEXEC);
      if (missing >= 0) close(missing);
      if (missing >= 0 || errno != ENOENT) return;
      if (i == 100) hasAsked.set_value();
    }
  });
  hasAsked.get_future().wait();
  EXPECT_EQ(fileSystem->unmountLazily(), UnmountResult::Started);
  EXPECT_TRUE(watcher->waitFor(kGMUserFileSystemDidUnmount));
  program.join();  // It ends because its requests are no longer answered.
  EXPECT_EQ(delegate.willUnmountCalls, 1);
  close(root);
}

TEST_F(MountLifecycle, UnmountingWithoutAMountSaysSo) {
  EXPECT_EQ(fileSystem->unmount(), UnmountResult::NotMounted);
  EXPECT_EQ(fileSystem->unmountLazily(), UnmountResult::NotMounted);
  mount();
  fileSystem->unmount();
  ASSERT_TRUE(fileSystem->waitUntilUnmounted(-1));
  EXPECT_EQ(fileSystem->unmount(), UnmountResult::NotMounted);
}

TEST_F(MountLifecycle, AnUnmountRightAfterTheMountWaitsForIt) {
  fileSystem->mountAtPath(mountPoint, {});
  EXPECT_EQ(fileSystem->unmount(), UnmountResult::Started);
  ASSERT_TRUE(watcher->waitFor(kGMUserFileSystemDidUnmount));
}

TEST_F(MountLifecycle, DeletingTheObjectUnmountsWithoutANotification) {
  mount();
  fileSystem.reset();
  EXPECT_FALSE(isMounted(mountPoint));
  EXPECT_EQ(delegate.willUnmountCalls, 1);
  EXPECT_THAT(watcher->names(), ElementsAre(kGMUserFileSystemDidMount));
}

TEST_F(MountLifecycle, DeletingTheObjectTakesABusyVolumeAway) {
  mount();
  const int file = open((mountPoint + "/file").c_str(), O_RDONLY | O_CLOEXEC);
  ASSERT_GE(file, 0);
  fileSystem.reset();
  EXPECT_FALSE(isMounted(mountPoint));
  EXPECT_EQ(delegate.willUnmountCalls, 1);
  close(file);
}

TEST_F(MountLifecycle, TheObjectMayBeDeletedByTheObserverOfItsUnmount) {
  std::promise<void> deleted;
  watcher->onEvent = [&](const MountWatcher::Event& event) {
    if (event.name != kGMUserFileSystemDidUnmount) return;
    fileSystem.reset();
    deleted.set_value();
  };
  mount();
  EXPECT_EQ(fileSystem->unmount(), UnmountResult::Started);
  EXPECT_EQ(deleted.get_future().wait_for(std::chrono::seconds(60)), std::future_status::ready);
  ASSERT_TRUE(watcher->waitFor(kGMUserFileSystemDidUnmount));
  EXPECT_EQ(fileSystem, nullptr);
}

TEST_F(MountLifecycle, ADeletedObjectThatNeverMountedDoesNothing) {
  fileSystem.reset();
  EXPECT_EQ(delegate.willUnmountCalls, 0);
  EXPECT_THAT(watcher->names(), IsEmpty());
}

TEST_F(MountLifecycle, AMountWhereAFileStandsFailsWithAReason) {
  close(open(mountPoint.c_str(), O_CREAT | O_WRONLY, 0600));
  fileSystem->mountAtPath(mountPoint, {});
  ASSERT_TRUE(watcher->waitFor(kGMUserFileSystemMountFailed));
  EXPECT_THAT(watcher->events()[0].reason, HasSubstr("is no directory"));
  EXPECT_EQ(delegate.willUnmountCalls, 0);
  EXPECT_TRUE(fileSystem->waitUntilUnmounted(-1));
}

TEST_F(MountLifecycle, AMountPointThatCannotBeMadeFailsWithAReason) {
  fileSystem->mountAtPath(folder.path() + "/no/such/volume", {});
  ASSERT_TRUE(watcher->waitFor(kGMUserFileSystemMountFailed));
  EXPECT_THAT(watcher->events()[0].reason, HasSubstr("cannot be made: No such file or directory"));
}

TEST_F(MountLifecycle, ASecondMountAtTheSamePathIsRefused) {
  mount();
  MemoryDelegate other;
  GMUserFileSystem second(&other, false);
  MountWatcher secondWatcher(&second);
  second.mountAtPath(mountPoint, {});
  ASSERT_TRUE(secondWatcher.waitFor(kGMUserFileSystemMountFailed));
  EXPECT_THAT(secondWatcher.events()[0].reason, HasSubstr("mounted at " + mountPoint + " already"));
  EXPECT_EQ(access((mountPoint + "/file").c_str(), R_OK), 0);
}

TEST_F(MountLifecycle, AnUnknownMountOptionFailsWithLibfusesWords) {
  fileSystem->mountAtPath(mountPoint, {"no_such_option"});
  ASSERT_TRUE(watcher->waitFor(kGMUserFileSystemMountFailed));
  EXPECT_THAT(watcher->events()[0].reason, HasSubstr("no_such_option"));
  EXPECT_NE(access(mountPoint.c_str(), F_OK), 0);
}

TEST_F(MountLifecycle, AMountWhoseProcessWasKilledIsCleanedAway) {
  int ready[2];
  ASSERT_EQ(pipe(ready), 0);
  const pid_t child = fork();
  if (child == 0) {
    MemoryDelegate own;
    GMUserFileSystem volume(&own, false);
    MountWatcher mounted(&volume);
    volume.mountAtPath(mountPoint, {});
    const char byte = mounted.waitFor(kGMUserFileSystemDidMount) ? '+' : '-';
    (void)!write(ready[1], &byte, 1);
    pause();
    _exit(0);
  }
  char byte = 0;
  ASSERT_EQ(read(ready[0], &byte, 1), 1);
  ASSERT_EQ(byte, '+');
  kill(child, SIGKILL);
  waitpid(child, nullptr, 0);
  ASSERT_TRUE(isMounted(mountPoint));
  mount();
  EXPECT_EQ(access((mountPoint + "/file").c_str(), R_OK), 0);
  fileSystem->unmount();
  ASSERT_TRUE(watcher->waitFor(kGMUserFileSystemDidUnmount));
  EXPECT_FALSE(isMounted(mountPoint));
  close(ready[0]);
  close(ready[1]);
}

TEST_F(MountLifecycle, ManyMountsInARowLeaveNothing) {
  for (int round = 0; round < 20; ++round) {
    GMUserFileSystem volume(&delegate, false);
    MountWatcher mounted(&volume);
    volume.mountAtPath(mountPoint, {});
    ASSERT_TRUE(mounted.waitFor(kGMUserFileSystemDidMount));
    EXPECT_EQ(access((mountPoint + "/file").c_str(), R_OK), 0);
  }
  EXPECT_FALSE(isMounted(mountPoint));
  EXPECT_EQ(delegate.willUnmountCalls, 20);
}

}  // namespace
}  // namespace kelvane::tests
