// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/recording/dr_notification_center.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/resource.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <thread>

#include "platform/foundation/main_thread.h"
#include "platform/recording/drive_watcher.h"
#include "platform/recording/file_lock.h"
#include "recording/burner_fixture.h"

namespace kelvane {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using virtualdrive::EjectManner;

class DRNotificationCenterTest : public testing::BurnerFixture {
 protected:
  void observeDevices() {
    center().addObserver(
        this, [this](const Notification& notification) { ++changes[notification.object]; },
        DRDeviceStatusChangedNotification, nullptr);
  }

  // Turns the loop until a change of the device has been told of, and forgets it.
  bool hearsOf(const DRDevice* device) {
    const bool heard = loop.runUntil([this, device] { return changes[device] > 0; });
    changes.clear();
    return heard;
  }

  /// Another program writes to the drive's disc, until this is let go.
  static std::optional<FileLock> recordingOn(const DRDevice& device) {
    return FileLock::acquire(*device.emulatedDisc() + "/sectors", std::chrono::seconds(60));
  }

  static DRNotificationCenter& center() { return DRNotificationCenter::currentRunLoopCenter(); }

  std::map<const void*, int> changes;
};

TEST_F(DRNotificationCenterTest, TheFirstObserverHearsOnceOfEveryDriveAndNotWithinTheCall) {
  const DRDevice* first = addDrive();
  const DRDevice* second = addDrive();
  observeDevices();
  EXPECT_THAT(changes, IsEmpty());
  loop.deliverQueued();
  EXPECT_EQ(changes[first], 1);
  EXPECT_EQ(changes[second], 1);
}

TEST_F(DRNotificationCenterTest, OpeningAndClosingTheTrayIsToldWhoeverDoesIt) {
  const DRDevice* device = addDrive();
  observeDevices();
  ASSERT_TRUE(hearsOf(device));
  std::string error;
  ASSERT_TRUE(open(*device->emulatedDisc()).ejectDisc(EjectManner::Button, &error));
  EXPECT_TRUE(hearsOf(device));
  EXPECT_FALSE(device->mediaIsPresent());
  ASSERT_TRUE(open(*device->emulatedDisc()).insertDisc(&error));
  EXPECT_TRUE(hearsOf(device));
  EXPECT_TRUE(device->mediaIsPresent());
}

TEST_F(DRNotificationCenterTest, ADiscThatIsBackBeforeAnyoneLookedIsToldOfAllTheSame) {
  DRDevice* device = addDrive();
  observeDevices();
  ASSERT_TRUE(hearsOf(device));
  ASSERT_TRUE(device->ejectMedia());
  ASSERT_TRUE(device->loadMedia());
  EXPECT_TRUE(hearsOf(device));
}

TEST_F(DRNotificationCenterTest, AskingADriveChangesNothingSoNothingIsTold) {
  const DRDevice* device = addDrive();
  const DRDevice* other = addDrive();
  observeDevices();
  loop.deliverQueued();
  changes.clear();
  for (int round = 0; round < 10; ++round) {
    EXPECT_TRUE(device->mediaIsPresent());
    EXPECT_TRUE(device->status().DRDeviceMediaInfoKey);
  }
  // What happens to the other drive is told after anything that there was to tell of this one.
  std::string error;
  ASSERT_TRUE(open(*other->emulatedDisc()).ejectDisc(EjectManner::Button, &error));
  ASSERT_TRUE(loop.runUntil([this, other] { return changes[other] > 0; }));
  EXPECT_EQ(changes[device], 0);
}

TEST_F(DRNotificationCenterTest, NewsOfADriveLeaveTheOthersAtRest) {
  const std::string disc = makeDisc("other");
  // Nothing ever comes of it, but the drive counts its commands in the file beside it.
  std::ofstream(disc + "/faults") << "on command 1000000: attention\n";
  const DRDevice* other = insert(disc);
  const DRDevice* device = addDrive();
  // What a drive tells once only it has told then.
  ASSERT_TRUE(other->mediaIsPresent());
  ASSERT_TRUE(device->mediaIsPresent());
  observeDevices();
  ASSERT_TRUE(loop.runUntil([&] { return changes[device] > 0 && changes[other] > 0; }));
  changes.clear();
  const auto commandsOfOther = [&disc] {
    std::ifstream file(disc + "/faults.state");
    return nlohmann::json::parse(file).at("counts").at(0).get<int>();
  };
  const int before = commandsOfOther();
  EXPECT_GT(before, 0);
  std::string error;
  ASSERT_TRUE(open(*device->emulatedDisc()).ejectDisc(EjectManner::Button, &error));
  ASSERT_TRUE(hearsOf(device));
  EXPECT_EQ(commandsOfOther(), before);
}

TEST_F(DRNotificationCenterTest, ADriveThatIsAddedLaterIsToldOf) {
  observeDevices();
  loop.deliverQueued();
  EXPECT_THAT(changes, IsEmpty());
  const DRDevice* device = addDrive();
  EXPECT_TRUE(hearsOf(device));
}

TEST_F(DRNotificationCenterTest, AFolderThatIsRemovedIsToldOf) {
  const DRDevice* device = addDrive();
  observeDevices();
  ASSERT_TRUE(hearsOf(device));
  std::filesystem::remove_all(*device->emulatedDisc());
  EXPECT_TRUE(loop.runUntil([this, device] { return changes[device] > 0 && !device->isValid(); }));
}

TEST_F(DRNotificationCenterTest, AFolderThatComesBackIsWatchedAgain) {
  const DRDevice* device = addDrive();
  observeDevices();
  ASSERT_TRUE(hearsOf(device));
  const std::string disc = *device->emulatedDisc();
  const std::string aside = folder.file("aside.kvdisc");
  std::filesystem::rename(disc, aside);
  ASSERT_TRUE(hearsOf(device));
  EXPECT_FALSE(device->isValid());
  std::filesystem::rename(aside, disc);
  ASSERT_TRUE(hearsOf(device));
  EXPECT_TRUE(device->isValid());
  std::string error;
  ASSERT_TRUE(open(disc).ejectDisc(EjectManner::Button, &error));
  EXPECT_TRUE(hearsOf(device));
}

TEST_F(DRNotificationCenterTest, ABurnIsToldOfWhenTheDriveGetsBusyAndWhenTheDiscHasChanged) {
  DRDevice* device = addDrive();
  observeDevices();
  ASSERT_TRUE(hearsOf(device));
  ASSERT_EQ(burn(device, makeImage("image.iso", 300 * 2048)).DRStatusStateKey, DRStatusStateDone);
  EXPECT_TRUE(
      loop.runUntil([this, device] { return changes[device] > 0 && !device->mediaIsBusy(); }));
  EXPECT_FALSE(device->mediaIsBlank());
}

TEST_F(DRNotificationCenterTest, DrivesAtRestAreNotPolled) {
  const DRDevice* device = addDrive();
  observeDevices();
  ASSERT_TRUE(hearsOf(device));
  EXPECT_FALSE(DriveWatcher::shared().isPolling());
}

TEST_F(DRNotificationCenterTest, TheEndOfAnotherProgramsRecordingIsWaitedForByPolling) {
  const DRDevice* device = addDrive();
  observeDevices();
  ASSERT_TRUE(hearsOf(device));
  auto recording = recordingOn(*device);
  ASSERT_TRUE(recording.has_value());
  DriveWatcher::shared().checkSoon();
  ASSERT_TRUE(hearsOf(device));
  EXPECT_TRUE(DriveWatcher::shared().isPolling());
  recording.reset();
  ASSERT_TRUE(hearsOf(device));
  EXPECT_FALSE(device->mediaIsBusy());
  EXPECT_FALSE(DriveWatcher::shared().isPolling());
}

/// While it lives the process gets no descriptor, without which no emulated drive can be asked.
class NoDescriptorLeft {
 public:
  NoDescriptorLeft() {
    getrlimit(RLIMIT_NOFILE, &usual_);
    const int next = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    close(next);
    // Not none at all: the event loop could not wait for those that it has (poll(2), EINVAL).
    const rlimit noFurther{static_cast<rlim_t>(next), usual_.rlim_max};
    setrlimit(RLIMIT_NOFILE, &noFurther);
  }
  ~NoDescriptorLeft() { setrlimit(RLIMIT_NOFILE, &usual_); }
  NoDescriptorLeft(const NoDescriptorLeft&) = delete;
  NoDescriptorLeft& operator=(const NoDescriptorLeft&) = delete;

 private:
  rlimit usual_{};
};

TEST_F(DRNotificationCenterTest, ADriveThatCouldNotBeAskedByWhoHeardOfItIsToldOfWhenItCan) {
  const DRDevice* device = addDrive();
  int reports = 0;
  const auto askInVain = [&](const Notification&) {
    if (++reports > 1) return;
    const NoDescriptorLeft noDescriptorLeft;
    EXPECT_FALSE(device->status().DRDeviceMediaInfoKey);
    DriveWatcher::shared().takeNoticeSoon();
  };
  center().addObserver(&reports, askInVain, DRDeviceStatusChangedNotification, device);
  EXPECT_TRUE(loop.runUntil([&reports] { return reports >= 2; }));
  EXPECT_TRUE(device->status().DRDeviceMediaInfoKey);
  EXPECT_TRUE(loop.runUntil([] { return !DriveWatcher::shared().isPolling(); }));
  center().removeObserver(&reports);
}

TEST_F(DRNotificationCenterTest, ADriveThatCouldNotBeAskedAtItsNewsIsToldOfWhenItCan) {
  const DRDevice* device = addDrive();
  observeDevices();
  ASSERT_TRUE(hearsOf(device));
  std::string error;
  ASSERT_TRUE(open(*device->emulatedDisc()).ejectDisc(EjectManner::Button, &error));
  {
    const NoDescriptorLeft noDescriptorLeft;
    ASSERT_TRUE(loop.runUntil([] { return DriveWatcher::shared().isPolling(); }));
    EXPECT_EQ(changes[device], 0);
  }
  EXPECT_TRUE(hearsOf(device));
  EXPECT_FALSE(device->mediaIsPresent());
}

TEST_F(DRNotificationCenterTest, ADriveThatCanNeverBeAskedIsGivenUpUntilItHasNews) {
  const DRDevice* device = addDrive();
  observeDevices();
  ASSERT_TRUE(hearsOf(device));
  {
    const NoDescriptorLeft noDescriptorLeft;
    EXPECT_TRUE(device->mediaIsPresent());
    DriveWatcher::shared().takeNoticeSoon();
    ASSERT_TRUE(loop.runUntil([] { return DriveWatcher::shared().isPolling(); }));
    EXPECT_TRUE(loop.runUntil([] { return !DriveWatcher::shared().isPolling(); }));
  }
  EXPECT_EQ(changes[device], 0);
  DriveWatcher::shared().checkSoon();
  EXPECT_TRUE(hearsOf(device));
}

TEST_F(DRNotificationCenterTest, WhatOthersHaveFoundOutOfADriveIsToldAndFollowed) {
  const DRDevice* device = addDrive();
  const DRDevice* other = addDrive();
  observeDevices();
  ASSERT_TRUE(loop.runUntil([&] { return changes[device] > 0 && changes[other] > 0; }));
  changes.clear();
  auto recording = recordingOn(*other);
  ASSERT_TRUE(recording.has_value());
  DriveWatcher::shared().takeNoticeSoon();
  ASSERT_TRUE(hearsOf(other));
  EXPECT_TRUE(DriveWatcher::shared().isPolling());
  recording.reset();
  EXPECT_TRUE(hearsOf(other));
  EXPECT_FALSE(other->mediaIsBusy());
}

TEST_F(DRNotificationCenterTest, ObserversHearOnlyOfTheirObjectAndName) {
  const int one = 0;
  const int other = 0;
  std::vector<std::string> heard;
  const auto note = [&heard](const char* who) {
    return [&heard, who](const Notification&) { heard.push_back(who); };
  };
  center().addObserver(this, note("one"), DRBurnStatusChangedNotification, &one);
  center().addObserver(this, note("any"), DRBurnStatusChangedNotification, nullptr);
  center().post(DRBurnStatusChangedNotification, &other);
  center().post(DRBurnStatusChangedNotification, &one);
  center().post("another name", &one);
  EXPECT_THAT(heard, IsEmpty());
  loop.deliverQueued();
  EXPECT_THAT(heard, ElementsAre("any", "one", "any"));
}

TEST_F(DRNotificationCenterTest, WhatAnotherThreadPostsArrivesOnTheMainThread) {
  bool onMainThread = false;
  int heard = 0;
  center().addObserver(
      this,
      [&](const Notification&) {
        onMainThread = isMainThread();
        ++heard;
      },
      DRBurnStatusChangedNotification, nullptr);
  std::thread([] { center().post(DRBurnStatusChangedNotification, nullptr); }).join();
  ASSERT_TRUE(loop.runUntil([&heard] { return heard > 0; }));
  EXPECT_TRUE(onMainThread);
}

TEST_F(DRNotificationCenterTest, WhatIsQueuedNoLongerReachesAnObserverThatWasRemoved) {
  int heard = 0;
  center().addObserver(
      this, [&heard](const Notification&) { ++heard; }, DRBurnStatusChangedNotification, nullptr);
  center().post(DRBurnStatusChangedNotification, nullptr);
  center().removeObserver(this);
  loop.deliverQueued();
  EXPECT_EQ(heard, 0);
}

}  // namespace
}  // namespace kelvane
