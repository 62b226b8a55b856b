// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/volumes/stale_mounts.h"

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "platform/foundation/paths.h"
#include "volumes/disc_fixture.h"

namespace kelvane {
namespace {

constexpr OwnMountPoints kPoints() {
  return {"/Volumes", "/Volumes/tarnwick", "/tmp/kelvanefsmount/.mnt"};
}

std::vector<std::string> pathsOfOwnMounts(const char* mountinfo) {
  std::vector<std::string> found;
  for (const MountTableLine& line : ownMounts(parseMountTable(mountinfo), kPoints())) {
    found.push_back(line.mountedOn);
  }
  return found;
}

TEST(OwnMountsTest, OverlayHiddenMountAndVisibleVolumesAreOurs) {
  EXPECT_EQ(
      pathsOfOwnMounts("1 0 0:1 / / rw - ext4 /dev/sda1 rw\n"
                       "2 1 0:2 / /Volumes/DISC ro - fuse.cd9660 /dev/kv0s0 ro\n"
                       "3 1 0:3 / /tmp/kelvanefsmount/.mnt ro - fuse.cd9660 /dev/kv0s0 ro\n"
                       "4 1 0:4 / /Volumes/tarnwick rw - fuse.kelvanefs kelvanefs rw\n"),
      (std::vector<std::string>{"/Volumes/tarnwick", "/tmp/kelvanefsmount/.mnt", "/Volumes/DISC"}));
}

TEST(OwnMountsTest, MountsOfOthersAreNot) {
  EXPECT_TRUE(pathsOfOwnMounts("1 0 0:1 / / rw - ext4 /dev/sda1 rw\n"
                               "2 1 0:2 / /Volumes/DISC ro - iso9660 /dev/sr0 ro\n"
                               "3 1 0:3 / /Volumes/NET rw - fuse.sshfs host: rw\n"
                               "4 1 0:4 / /Volumes/A/B ro - fuse.cd9660 /dev/kv0s0 ro\n"
                               "5 1 0:5 / /other/Volumes/X ro - fuse.cd9660 /dev/kv0s0 ro\n"
                               "6 1 0:6 / /Volumes/tarnwick rw - tmpfs tmpfs rw\n"
                               "7 1 0:7 / /Volumes ro - fuse.cd9660 /dev/kv0s0 ro\n")
                  .empty());
}

// Mounts live on when the application that made them is killed; the next one takes them away.
class StaleMountsTest : public test::DiscFixture {
 protected:
  // Runs `work` in another process that is then killed, as a crashing application would be.
  static void runAndKill(const std::function<void()>& work) {
    int ready[2] = {};
    ASSERT_EQ(pipe(ready), 0);
    const pid_t child = fork();
    if (child == 0) {
      work();
      static_cast<void>(write(ready[1], "x", 1) + 1);
      for (;;) pause();
    }
    close(ready[1]);
    char byte = 0;
    EXPECT_EQ(read(ready[0], &byte, 1), 1);
    close(ready[0]);
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
  }

  static void cleanUp() {
    std::string error;
    const auto lock = MountPointsLock::acquire(&error);
    ASSERT_TRUE(lock.has_value()) << error;
    cleanUpStaleMounts(*lock);
  }
};

TEST_F(StaleMountsTest, WhatAKilledInstanceMountedIsUnmountedAndItsFoldersRemoved) {
  makeDisc("kv0", "DISC");
  const std::string visible = prefix_.volumes() + "/DISC";
  std::optional<MountPointsLock> lock;
  runAndKill([&] {
    std::string error;
    lock = MountPointsLock::acquire(&error);
    mountAt("kv0", visible);
    mountAt("kv0", paths::hiddenMountPoint());
  });
  ASSERT_TRUE(isMountPoint(visible));
  ASSERT_TRUE(isMountPoint(paths::hiddenMountPoint()));
  cleanUp();
  EXPECT_FALSE(isMountPoint(visible));
  EXPECT_FALSE(isMountPoint(paths::hiddenMountPoint()));
  EXPECT_FALSE(std::filesystem::exists(visible));
  EXPECT_TRUE(std::filesystem::is_directory(paths::hiddenMountPoint()));
}

TEST_F(StaleMountsTest, AMountThatIsStillInUseIsTakenAwayToo) {
  makeDisc("kv0", "DISC");
  const std::string visible = prefix_.volumes() + "/DISC";
  mountAt("kv0", visible);
  const std::ifstream user(visible + "/hello");
  ASSERT_TRUE(user.is_open());
  cleanUp();
  EXPECT_FALSE(isMountPoint(visible));
  EXPECT_FALSE(std::filesystem::exists(visible));
}

TEST_F(StaleMountsTest, AMountWhoseServingProcessWasKilledIsTakenAway) {
  makeDisc("kv0", "DISC");
  const std::string overlay = paths::overlayMountPoint();
  std::filesystem::create_directory(overlay);
  const std::string program = KELVANE_LIBEXEC_DIR "/isomount";
  const std::string sectors = discFolder("kv0") + "/sectors";
  const pid_t server = fork();
  if (server == 0) {
    execl(program.c_str(), "isomount", "--foreground", "--source", sectors.c_str(), overlay.c_str(),
          nullptr);
    _exit(127);
  }
  while (!isMountPoint(overlay)) {
    ASSERT_EQ(waitpid(server, nullptr, WNOHANG), 0) << "the mount did not come";
    usleep(1000);
  }
  kill(server, SIGKILL);
  waitpid(server, nullptr, 0);
  ASSERT_FALSE(mountTableEntry(overlay).has_value());  // "Transport endpoint is not connected"
  ASSERT_TRUE(isMountPoint(overlay));
  cleanUp();
  EXPECT_FALSE(isMountPoint(overlay));
  EXPECT_FALSE(std::filesystem::exists(overlay));
}

TEST_F(StaleMountsTest, MountsUnderOtherFoldersStay) {
  makeDisc("kv0", "DISC");
  const std::string elsewhere = prefix_.path() + "/elsewhere";
  mountAt("kv0", elsewhere);
  cleanUp();
  EXPECT_TRUE(isMountPoint(elsewhere));
}

}  // namespace
}  // namespace kelvane
