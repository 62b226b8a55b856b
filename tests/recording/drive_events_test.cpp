// SPDX-License-Identifier: GPL-2.0-or-later
// Events are made by asking the kernel to tell of a device once more; no drive is needed for that.
#include "platform/recording/drive_events.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

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
  const auto events = DriveEvents::listen(Channel::Kernel, "loop", [&heard] { ++heard; });
  ASSERT_NE(events, nullptr);
  ASSERT_TRUE(tellAgain());
  ASSERT_TRUE(loop_.runUntil([&heard] { return heard > 0; }));
  ASSERT_TRUE(tellAgain());
  EXPECT_TRUE(loop_.runUntil([&heard] { return heard > 1; })) << "again and again";
}

TEST_F(DriveEventsTest, EventsOfOtherDevicesAreNot) {
  int heardOfDrives = 0;
  int heardOfLoops = 0;
  const auto drives = DriveEvents::listen(Channel::Kernel, "sr", [&] { ++heardOfDrives; });
  const auto loops = DriveEvents::listen(Channel::Kernel, "loop", [&] { ++heardOfLoops; });
  ASSERT_NE(drives, nullptr);
  ASSERT_NE(loops, nullptr);
  ASSERT_TRUE(tellAgain());
  ASSERT_TRUE(loop_.runUntil([&] { return heardOfLoops > 0; }));
  EXPECT_EQ(heardOfDrives, 0);
}

TEST_F(DriveEventsTest, OnlyUdevdTellsOfMedia) {
  const auto kernel = DriveEvents::listen(Channel::Kernel, "sr", [] {});
  const auto udev = DriveEvents::listen(Channel::Udev, "sr", [] {});
  ASSERT_NE(kernel, nullptr);
  ASSERT_NE(udev, nullptr);
  EXPECT_FALSE(kernel->tellsOfMedia());
  EXPECT_TRUE(udev->tellsOfMedia());
}

}  // namespace
}  // namespace kelvane
