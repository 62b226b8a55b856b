// SPDX-License-Identifier: GPL-2.0-or-later
#include <gmock/gmock.h>
#include <unistd.h>

#include <QSettings>
#include <chrono>
#include <filesystem>
#include <fstream>

#include "app/controller_fixture.h"
#include "platform/foundation/paths.h"
#include "platform/foundation/user_defaults.h"
#include "platform/recording/drive.h"
#include "recording/scripted_transport.h"

namespace kelvane::test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;

namespace fs = std::filesystem;

class KVControllerBurn : public ControllerFixture {
 protected:
  void SetUp() override {
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope,
                       QString::fromStdString(prefix_.path() + "/config"));
    overlay_ = paths::overlayDirectory(812);
    fs::create_directories(overlay_ + "/docs");
    write(overlay_ + "/docs/a.txt");
    write(paths::hideListFile(overlay_));
    fs::create_directories(paths::hiddenMountPoint());
    controller_.setTmpDirPath(overlay_);
    controller_.setCurrentDevice(&device_);
    DeviceRecord record;
    record.DRDevice = &device_;
    controller_.setCurrentDeviceDictionary(record);
    device_.setTracks({0, 11702});
  }

  static void write(const std::string& path) { std::ofstream(path) << "content"; }

  /// The device gone, nothing of the opened disc left in the temporary folder.
  void expectIdle() {
    EXPECT_EQ(controller_.currentDevice(), nullptr);
    EXPECT_FALSE(controller_.burnInProgress());
    EXPECT_FALSE(controller_.mediaIsMounted());
    EXPECT_FALSE(fs::exists(overlay_));
    EXPECT_FALSE(fs::exists(paths::hideListFile(overlay_)));
    EXPECT_FALSE(fs::exists(paths::hiddenMountFolder()));
  }

  static std::string contentOf(const std::string& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  /// The burn is refused before anything is written, the changes are kept at `kept`, and the user
  /// is told why and where.
  void expectRefusal(const std::string& why, const std::string& kept) {
    device_.type = DRDeviceMediaTypeDVDPlusR;  // Goes the way of a CD.
    controller_.burn();
    ASSERT_EQ(window_.alerts.size(), 1u);
    EXPECT_EQ(window_.alerts[0].messageKey, "CreateTrackAbortedWithError");
    EXPECT_EQ(window_.alerts[0].informativeKey, "SessionNotPreparedLong");
    EXPECT_THAT(window_.alerts[0].detail, ::testing::HasSubstr(why));
    EXPECT_THAT(window_.alerts[0].detail, ::testing::HasSubstr("kept in " + kept + "."));
    EXPECT_THAT(log_.lines(), Contains("Your changes are kept in " + kept + "."));
    EXPECT_EQ(contentOf(kept + "/docs/a.txt"), "content");
    EXPECT_EQ(controller_.currentDevice(), nullptr);
    EXPECT_FALSE(controller_.burnInProgress());
  }

  std::string overlay_;
};

TEST_F(KVControllerBurn, TheCleanUpWithoutBurnEjectsAndRepliesAndLeavesAccessToOtherClassesAlone) {
  controller_.setMediaIsMounted(true);
  turn();
  newCalls();
  controller_.cleanupWithoutBurn();
  // The drive here is not of the class of the machine's drives itself: its access is not touched.
  EXPECT_THAT(newCalls(), ElementsAre("header headerDisksAvail", "caption buttonopen",
                                      "will eject kv0", "eject", "closed kv0", "reply yes"));
  expectIdle();
}

TEST_F(KVControllerBurn, TheCleanUpWithoutBurnCompletesWithoutADevice) {
  controller_.setCurrentDevice(nullptr);
  controller_.cleanupWithoutBurn();
  EXPECT_THAT(newCalls(), ElementsAre("caption buttonopen", "reply yes"));
  turn();
  EXPECT_TRUE(window_.has("text insertdisk")) << "the scan that was asked for";
  expectIdle();
}

TEST_F(KVControllerBurn, TheCleanUpAfterABurnClearsTheFlagAndStopsTheBarFirst) {
  controller_.setMediaIsMounted(true);
  controller_.setBurnInProgress(true);
  turn();
  newCalls();
  window_.onCall = [this](const std::string& call) {
    EXPECT_FALSE(controller_.burnInProgress()) << "at " << call;
  };
  controller_.commonBurnCleanup();
  EXPECT_THAT(newCalls(), ElementsAre("bar stops", "header headerDisksAvail", "caption buttonopen",
                                      "will eject kv0", "eject", "closed kv0", "reply yes"));
  expectIdle();
}

/// What stands of the opened disc at the time of each step.
class KVControllerCleanUp : public KVControllerBurn {
 protected:
  void SetUp() override {
    KVControllerBurn::SetUp();
    controller_.setMediaIsMounted(true);
    turn();
    window_.onCall = [this](const std::string& call) {
      if (call != "header headerDisksAvail" && call != "caption buttonopen" && call != "eject" &&
          call != "reply yes") {
        return;
      }
      std::string standing;
      if (fs::exists(overlay_)) standing += " overlay";
      if (fs::exists(paths::hideListFile(overlay_))) standing += " list";
      if (fs::exists(paths::hiddenMountFolder())) standing += " folder";
      moments_.push_back(call + ":" + standing);
    };
  }
  std::vector<std::string> moments_;
};

TEST_F(KVControllerCleanUp, WithoutBurnTheFolderOfTheHiddenMountGoesLast) {
  controller_.cleanupWithoutBurn();
  EXPECT_THAT(moments_, ElementsAre("header headerDisksAvail: overlay list folder",
                                    "caption buttonopen: overlay list folder", "eject: folder",
                                    "reply yes:"));
}

TEST_F(KVControllerCleanUp, AfterABurnItGoesWithTheChangesBeforeAllElse) {
  controller_.commonBurnCleanup();
  EXPECT_THAT(
      moments_,
      ElementsAre("header headerDisksAvail:", "caption buttonopen:", "eject:", "reply yes:"));
}

/// A drive of the class of the machine's drives, or of one derived from it, whose lock is a file.
template <typename Device>
std::unique_ptr<DRDevice> lockedBy(const std::string& path) {
  DriveIdentity identity;
  identity.bsdName = "sr7";
  identity.exclusiveLockPath = path;
  return std::make_unique<Device>(std::make_unique<Drive>(
      std::move(identity), std::make_unique<kelvane::testing::ScriptedTransport>()));
}

class DerivedDevice : public DRDevice {
 public:
  using DRDevice::DRDevice;
};

class KVControllerAccess : public KVControllerBurn {
 protected:
  void SetUp() override {
    KVControllerBurn::SetUp();
    write(lock_);
    other_ = lockedBy<DRDevice>(lock_);
  }

  /// Has the access to a drive of this class, and cleans up. Whether somebody else can have it
  /// then.
  template <typename Device>
  bool isDroppedBy(void (KVController::*cleanUp)()) {
    const auto device = lockedBy<Device>(lock_);
    EXPECT_TRUE(device->acquireExclusiveAccess());
    controller_.setCurrentDevice(device.get());
    (controller_.*cleanUp)();
    const bool dropped = other_->acquireExclusiveAccess();
    other_->releaseExclusiveAccess();
    return dropped;
  }

  const std::string lock_ = prefix_.path() + "/lock";
  std::unique_ptr<DRDevice> other_;
};

TEST_F(KVControllerAccess, ToADriveOfThatClassAloneIsDroppedByTheCleanUpWithoutBurn) {
  EXPECT_TRUE(isDroppedBy<DRDevice>(&KVController::cleanupWithoutBurn));
  EXPECT_FALSE(isDroppedBy<DerivedDevice>(&KVController::cleanupWithoutBurn));
}

TEST_F(KVControllerAccess, IsNotDroppedByTheCleanUpAfterABurn) {
  EXPECT_FALSE(isDroppedBy<DRDevice>(&KVController::commonBurnCleanup));
}

TEST_F(KVControllerBurn, NeitherCleanUpDeletesTheImage) {
  write(paths::burnImage(overlay_));
  controller_.cleanupWithoutBurn();
  controller_.commonBurnCleanup();
  EXPECT_TRUE(fs::exists(paths::burnImage(overlay_)));
}

TEST_F(KVControllerBurn, CancellingRepliesTwiceAndNeverSetsTheFlag) {
  controller_.burnConfirmationDidCancel();
  EXPECT_FALSE(controller_.burnInProgress());
  EXPECT_THAT(newCalls(),
              ElementsAre("endSheet", "orderOutPanel", "caption buttonopen", "will eject kv0",
                          "eject", "closed kv0", "reply yes", "reply yes"));
  expectIdle();
}

TEST_F(KVControllerBurn, ConfirmingEndsTheSheetBeforeTheBurnBegins) {
  controller_.burnConfirmationDidConfirm();
  EXPECT_THAT(newCalls(), ElementsAre("endSheet", "orderOutPanel"));
  EXPECT_FALSE(controller_.burnInProgress());
}

TEST_F(KVControllerBurn, ABurnShowsItsViewAndTheBarAnimatesLaterNotAtOnce) {
  device_.deviceStatus = {};  // A disc of which nothing is known cannot be continued.
  const auto begin = std::chrono::steady_clock::now();
  window_.onCall = [this](const std::string& call) {
    EXPECT_TRUE(controller_.burnInProgress()) << "at " << call << ", with which the burn begins";
    window_.onCall = nullptr;
  };
  controller_.burn();
  EXPECT_THAT(newCalls(),
              ElementsAre("header burningdisk", "burnMessage burnpreparing", "duration 600 ms",
                          "mountedItem to left", "burn to in", "bar indeterminate", "bar stops",
                          "alert CreateTrackAbortedWithError SessionNotPreparedLong",
                          "will eject kv0", "eject", "bar stops", "caption buttonopen",
                          "will eject kv0", "eject", "closed kv0", "reply yes"));
  expectIdle();
  turnUntil([this] { return window_.has("bar animates"); });
  EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(1600));
}

TEST_F(KVControllerBurn, ADiscThatHasGoneIsNotBurned) {
  controller_.setCurrentDevice(nullptr);
  controller_.burn();
  EXPECT_THAT(newCalls(), ElementsAre("beep"));
  EXPECT_FALSE(controller_.burnInProgress());
}

TEST_F(KVControllerBurn, ABurnIsNotBegunTwice) {
  controller_.setBurnInProgress(true);
  newCalls();
  controller_.burn();
  EXPECT_THAT(newCalls(), ElementsAre("beep"));
  controller_.setBurnInProgress(false);
}

// The disc was confirmed to be burned a moment before the scan found it gone.
TEST_F(KVControllerBurn, ABurnThatHasBegunIsNotCleanedUpBehindItsBack) {
  controller_.setMediaIsMounted(true);
  device_.present = false;
  controller_.performScanForMedia();
  EXPECT_TRUE(window_.has("disc has gone"));
  controller_.setBurnInProgress(true);
  turn();
  EXPECT_EQ(controller_.currentDevice(), &device_);
  EXPECT_TRUE(fs::exists(overlay_));
  controller_.setBurnInProgress(false);
}

TEST_F(KVControllerBurn, AppleDoubleFilesAreRemovedWhereTheUserWantsThatAndOnlyThose) {
  UserDefaults::standard().setBool(true, "noappledoublefiles");
  write(overlay_ + "/._top");
  write(overlay_ + "/docs/._a.txt");
  fs::create_directories(overlay_ + "/docs/deep");
  write(overlay_ + "/docs/deep/._b");
  write(overlay_ + "/docs/kept._c");
  device_.deviceStatus = {};  // The burn is refused, and what would have been burned is kept.
  controller_.burn();
  std::vector<std::string> left;
  for (const auto& entry : fs::recursive_directory_iterator(overlay_ + ".kept")) {
    if (entry.is_regular_file()) left.push_back(entry.path().filename().string());
  }
  EXPECT_THAT(left, ::testing::UnorderedElementsAre("a.txt", "kept._c"));
  const std::string line =
      "AppleDouble files suppressed. Resourceforks and extended attributes will not be preserved.";
  const std::vector<std::string> lines = log_.lines();
  EXPECT_EQ(std::count(lines.begin(), lines.end(), line), 3);
}

TEST_F(KVControllerBurn, AppleDoubleFilesStayUnlessTheUserWantsOtherwise) {
  write(overlay_ + "/._top");
  device_.deviceStatus = {};
  controller_.burn();
  EXPECT_TRUE(fs::exists(overlay_ + ".kept/._top"));
}

TEST_F(KVControllerBurn, AnImagingThatFailsIsReportedWithWhatTheProgramSaid) {
  device_.type = DRDeviceMediaTypeDVDPlusR;  // Not among the DVDs: it goes the way of a CD.
  controller_.burn();
  ASSERT_EQ(window_.alerts.size(), 1u);
  EXPECT_EQ(window_.alerts[0].messageKey, "CreateTrackAbortedWithError");
  EXPECT_EQ(window_.alerts[0].style, Alert::Style::Warning);
  EXPECT_FALSE(window_.alerts[0].detail.empty());
  EXPECT_TRUE(window_.has("burnMessage preparingdata"));
  EXPECT_FALSE(window_.has("burnMessage burningchangescd"));
  EXPECT_THAT(log_.lines(), Contains("devicename used:kv0"));
  expectIdle();
}

TEST_F(KVControllerBurn, ALinkAtTheImagesNameIsNotWrittenThroughAndTheChangesAreKept) {
  const std::string victim = prefix_.path() + "/victim";
  write(victim);
  fs::create_symlink(victim, paths::burnImage(overlay_));
  expectRefusal(paths::burnImage(overlay_) + " is somebody else's", overlay_ + ".kept");
  EXPECT_EQ(contentOf(victim), "content");
}

TEST_F(KVControllerBurn, AnotherUsersFileAtTheImagesNameIsNotOverwritten) {
  write(paths::burnImage(overlay_));
  if (geteuid() != 0 || chown(paths::burnImage(overlay_).c_str(), 65534, 65534) != 0) {
    GTEST_SKIP() << "only root can make another user's file";
  }
  expectRefusal(paths::burnImage(overlay_) + " is somebody else's", overlay_ + ".kept");
  EXPECT_EQ(contentOf(paths::burnImage(overlay_)), "content");
}

TEST_F(KVControllerBurn, TheImageIsItsOwnersAloneFromTheBeginning) {
  device_.type = DRDeviceMediaTypeDVDPlusR;
  controller_.burn();  // Fails later on: there is no disc to be continued.
  EXPECT_EQ(fs::status(paths::burnImage(overlay_)).permissions(),
            fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(KVControllerBurn, ALinkAtTheHideListsNameIsNotReadAndTheChangesAreKept) {
  fs::remove(paths::hideListFile(overlay_));
  fs::create_symlink("/dev/null", paths::hideListFile(overlay_));
  expectRefusal(paths::hideListFile(overlay_) + " is somebody else's", overlay_ + ".kept");
}

TEST_F(KVControllerBurn, WithoutTheHideListDeletedFilesWouldComeBackSoTheChangesAreKept) {
  fs::remove(paths::hideListFile(overlay_));
  expectRefusal("could not be written", overlay_ + ".kept");
}

TEST_F(KVControllerBurn, WhatWasKeptEarlierIsNotReplaced) {
  fs::remove(paths::hideListFile(overlay_));
  fs::create_directory(overlay_ + ".kept");
  fs::create_symlink("/nowhere", overlay_ + ".kept-1");
  expectRefusal("could not be written", overlay_ + ".kept-2");
}

TEST_F(KVControllerBurn, AnOverlayDirectoryThatWasReplacedByALinkIsNeitherBurnedNorEmptied) {
  fs::rename(overlay_, prefix_.path() + "/victim");
  fs::create_symlink(prefix_.path() + "/victim", overlay_);
  UserDefaults::standard().setBool(true, "noappledoublefiles");
  write(prefix_.path() + "/victim/._companion");
  controller_.burn();
  EXPECT_TRUE(fs::exists(prefix_.path() + "/victim/._companion"));
  ASSERT_EQ(window_.alerts.size(), 1u);
  EXPECT_THAT(window_.alerts[0].detail, ::testing::HasSubstr(overlay_ + " is somebody else's"));
  EXPECT_EQ(contentOf(prefix_.path() + "/victim/docs/a.txt"), "content");
}

TEST_F(KVControllerBurn, TheCleanUpsLeaveWhatIsSomebodyElses) {
  const std::vector<std::string> names = {overlay_, overlay_ + "/docs/a.txt",
                                          paths::hideListFile(overlay_),
                                          paths::hiddenMountFolder()};
  for (const std::string& name : names) {
    if (geteuid() != 0 || chown(name.c_str(), 65534, 65534) != 0) {
      GTEST_SKIP() << "only root can make another user's file";
    }
  }
  controller_.commonBurnCleanup();
  controller_.cleanupWithoutBurn();
  for (const std::string& name : names) EXPECT_TRUE(fs::exists(name)) << name;
}

}  // namespace
}  // namespace kelvane::test
