// SPDX-License-Identifier: GPL-2.0-or-later
// The visible mounts of an emulated drive whose tray is opened and closed.
#include <QCoreApplication>
#include <QEventLoop>
#include <filesystem>
#include <fstream>

#include "platform/recording/dr_device.h"
#include "platform/recording/dr_notification_center.h"
#include "platform/recording/drive_registry.h"
#include "platform/volumes/mount_table.h"
#include "platform/volumes/visible_mounts.h"
#include "volumes/disc_fixture.h"

namespace kelvane {
namespace {

class VisibleMountsDriveTest : public test::DiscFixture {
 protected:
  void SetUp() override {
    DiscFixture::SetUp();
    if (IsSkipped()) return;
    const std::string disc = prefix_.path() + "/DISC.kvdisc";
    std::filesystem::create_directory(prefix_.path() + "/content");
    std::ofstream(prefix_.path() + "/content/hello") << "hello\n";
    ASSERT_TRUE(test::runProgram({KELVANE_BIN_DIR "/kelvanedisc", "create", disc, "--media", "cd-r",
                                  "--from", prefix_.path() + "/content", "--label", "REAL DISC"}));
    DriveRegistry::shared().setRealDrives(DriveRegistry::RealDrives::Excluded);
    std::string error;
    device_ = DriveRegistry::shared().addEmulatedDrive(disc, &error);
    ASSERT_NE(device_, nullptr) << error;
  }

  ~VisibleMountsDriveTest() override {
    DRNotificationCenter::currentRunLoopCenter().removeObserver(this);
    DriveRegistry::shared().reset();
    unsetenv("KELVANEFS_EMULATED_DRIVES");
  }

  // Observes the drives as the controller does: after the mounts.
  void observe() {
    DRNotificationCenter::currentRunLoopCenter().addObserver(
        this,
        [this](const Notification& /*change*/) {
          seen_.push_back({device_->mediaIsPresent(), isMountPoint(visible_)});
        },
        DRDeviceStatusChangedNotification, nullptr);
  }

  // Lets the event loop turn until an observer has seen the disc like that.
  void awaitSeen(bool present) {
    while (seen_.empty() || seen_.back().present != present) {
      QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
  }

  struct Seen {
    bool present;
    bool mounted;
  };

  int argc_ = 1;
  char name_[16] = "test";
  char* argv_[2] = {name_, nullptr};
  QCoreApplication application_{argc_, argv_};
  const std::string visible_ = prefix_.volumes() + "/REAL DISC";
  DRDevice* device_ = nullptr;
  std::vector<Seen> seen_;
};

TEST_F(VisibleMountsDriveTest, WhoObservesAfterTheMountsFindsTheDiscMountedAndItsMountGoneWithIt) {
  VisibleMounts mounts;
  mounts.start();
  observe();
  awaitSeen(true);
  EXPECT_TRUE(seen_.back().mounted);
  EXPECT_TRUE(std::filesystem::exists(visible_ + "/hello"));
  EXPECT_EQ(mountTableEntry(visible_)->mountedFrom, "/dev/kv0s0");

  ASSERT_TRUE(device_->ejectMedia());
  awaitSeen(false);
  EXPECT_FALSE(seen_.back().mounted);
  EXPECT_TRUE(std::filesystem::is_empty(prefix_.volumes()));

  ASSERT_TRUE(device_->loadMedia());
  awaitSeen(true);
  EXPECT_TRUE(seen_.back().mounted);
}

TEST_F(VisibleMountsDriveTest, AReleasedDriveIsMountedAgainWithoutANotification) {
  VisibleMounts mounts;
  mounts.start();
  mounts.hold("kv0");
  observe();
  awaitSeen(true);
  EXPECT_FALSE(seen_.back().mounted);
  mounts.release("kv0");
  EXPECT_TRUE(isMountPoint(visible_));
}

}  // namespace
}  // namespace kelvane
