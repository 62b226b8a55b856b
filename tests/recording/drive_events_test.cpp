// SPDX-License-Identifier: GPL-2.0-or-later
// Events are made by asking the kernel to tell of a device once more; no drive is needed for that.
#include "platform/recording/drive_events.h"

#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "recording/event_loop.h"

namespace kelvane {
namespace {

using Channel = DriveEvents::Channel;

class DriveEventsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!std::filesystem::exists(kEvent) || !tellAgain()) {
      GTEST_SKIP() << "no loop device here of which the kernel could be made to tell";
    }
  }

  static bool tellAgain() {
    std::ofstream event(kEvent);
    event << "change" << std::flush;
    return event.good();
  }

  static constexpr char kEvent[] = "/sys/block/loop0/uevent";
  testing::EventLoop loop_;
};

TEST_F(DriveEventsTest, AnEventOfADeviceOfThatNameIsToldOf) {
  int heard = 0;
  const auto events =
      DriveEvents::listen(Channel::Kernel, "loop", [&heard](const std::string&) { ++heard; });
  ASSERT_NE(events, nullptr);
  ASSERT_TRUE(tellAgain());
  ASSERT_TRUE(loop_.runUntil([&heard] { return heard > 0; }));
  ASSERT_TRUE(tellAgain());
  EXPECT_TRUE(loop_.runUntil([&heard] { return heard > 1; })) << "again and again";
}

TEST_F(DriveEventsTest, EventsOfOtherDevicesAreNot) {
  int heardOfDrives = 0;
  int heardOfLoops = 0;
  const auto drives =
      DriveEvents::listen(Channel::Kernel, "sr", [&](const std::string&) { ++heardOfDrives; });
  const auto loops = DriveEvents::listen(Channel::Kernel, "loop", [&](const std::string& name) {
    heardOfLoops += name == "loop0" ? 1 : 0;
  });
  ASSERT_NE(drives, nullptr);
  ASSERT_NE(loops, nullptr);
  ASSERT_TRUE(tellAgain());
  ASSERT_TRUE(loop_.runUntil([&] { return heardOfLoops > 0; }));
  EXPECT_EQ(heardOfDrives, 0);
}

TEST_F(DriveEventsTest, OnlyUdevdTellsOfMedia) {
  const auto kernel = DriveEvents::listen(Channel::Kernel, "sr", [](const std::string&) {});
  const auto udev = DriveEvents::listen(Channel::Udev, "sr", [](const std::string&) {});
  ASSERT_NE(kernel, nullptr);
  ASSERT_NE(udev, nullptr);
  EXPECT_FALSE(kernel->tellsOfMedia());
  EXPECT_TRUE(udev->tellsOfMedia());
}

/// In a process of its own: gives it a /run in which the daemon of udev runs, and has looked at
/// nothing yet. False where that cannot be had.
bool enterAMachineWhereUdevRuns() {
  if (unshare(CLONE_NEWNS) != 0) return false;
  if (mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) return false;
  if (mount("run", "/run", "tmpfs", 0, nullptr) != 0) return false;
  std::filesystem::create_directories("/run/udev/data");
  return std::ofstream("/run/udev/control").good();
}

/// What the daemon writes of a block device when it has applied its rules.
void writeWhatUdevKnowsOf(const std::string& name) {
  std::ifstream numbers("/sys/class/block/" + name + "/dev");
  std::string majorAndMinor;
  numbers >> majorAndMinor;
  std::ofstream("/run/udev/data/b" + majorAndMinor) << "I:1000000\n";
}

constexpr int kSettledTooEarly = 1;
constexpr int kNeverSettled = 2;
constexpr int kNoSuchMachine = 77;

int lookBeforeAndAfterUdev() {
  if (!enterAMachineWhereUdevRuns()) return kNoSuchMachine;
  if (DriveEvents::isSettled("loop0")) return kSettledTooEarly;
  writeWhatUdevKnowsOf("loop0");
  return DriveEvents::isSettled("loop0") ? EXIT_SUCCESS : kNeverSettled;
}

TEST_F(DriveEventsTest, ADriveIsSettledOnceUdevHasAppliedItsRules) {
  const pid_t process = fork();
  if (process == 0) _exit(lookBeforeAndAfterUdev());
  int status = 0;
  ASSERT_EQ(waitpid(process, &status, 0), process);
  ASSERT_TRUE(WIFEXITED(status));
  if (WEXITSTATUS(status) == kNoSuchMachine) GTEST_SKIP() << "no /run of its own can be had here";
  EXPECT_EQ(WEXITSTATUS(status), EXIT_SUCCESS)
      << (WEXITSTATUS(status) == kSettledTooEarly ? "settled too early" : "never settled");
}

TEST_F(DriveEventsTest, WhatIsNotThereIsNotWaitedFor) {
  EXPECT_TRUE(DriveEvents::isSettled("sr99"));
}

}  // namespace
}  // namespace kelvane
