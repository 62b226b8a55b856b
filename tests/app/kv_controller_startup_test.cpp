// SPDX-License-Identifier: GPL-2.0-or-later
#include <gmock/gmock.h>

#include "app/controller_fixture.h"
#include "foundation/temporary_user_defaults.h"
#include "platform/recording/dr_burn_status.h"
#include "platform/recording/dr_notification_center.h"
#include "services/kv_license_controller.h"
#include "services/recording_license_window.h"

namespace kelvane::test {
namespace {

using testing::ElementsAre;

class KVControllerStartup : public ControllerFixture {};

TEST_F(KVControllerStartup, TheWindowIsPreparedWithMessageAndListInsideAndTheOtherViewsToTheRight) {
  controller_.awakeFromNib();
  EXPECT_THAT(newCalls(), ElementsAre("centerWindows", "hide openButton", "caption buttonopen",
                                      "message to in direct", "diskScroll to in direct",
                                      "mountedItem to right direct", "burn to right direct",
                                      "text insertdisk"));
}

TEST_F(KVControllerStartup, DrivesAreReservedAndNoScanRunsBeforeADriveReports) {
  devices_ = {&device_};
  controller_.initialiseController();
  EXPECT_THAT(newCalls(), ElementsAre("makeKeyAndOrderFront", "reserve"));
}

TEST_F(KVControllerStartup, TheWindowMayBeBroughtBackFromTheMomentThatItComesToTheFront) {
  std::vector<bool> allowed;
  window_.onCall = [this, &allowed](const std::string& call) {
    if (call == "makeKeyAndOrderFront") allowed.push_back(controller_.allowMainWindowUnhide());
  };
  EXPECT_FALSE(controller_.allowMainWindowUnhide());
  controller_.initialiseController();
  EXPECT_THAT(allowed, ElementsAre(true));
}

// What happens within a report is not seen; what both queue then is.
TEST_F(KVControllerStartup, WhoeverIsToHearOfTheDrivesBeforeTheControllerIsCalledInTime) {
  devices_ = {&device_};
  DRNotificationCenter& center = DRNotificationCenter::currentRunLoopCenter();
  services_.drivesWillBeObserved = [this, &center] {
    window_.note("drives will be observed");
    const auto hear = [this](const Notification&) {
      performOnMainThread([this] { window_.note("heard before"); });
    };
    center.addObserver(this, hear, DRDeviceStatusChangedNotification, nullptr);
  };
  services_.discsWillBeScanned = [this] { window_.note("scan"); };
  EXPECT_FALSE(controller_.observesDrives());
  controller_.initialiseController();
  EXPECT_TRUE(controller_.observesDrives());
  EXPECT_THAT(newCalls(),
              ElementsAre("makeKeyAndOrderFront", "reserve", "drives will be observed"));
  center.post(DRDeviceStatusChangedNotification, &device_);
  turnUntil([this] { return window_.has("scan"); });
  center.removeObserver(this);
  const std::vector<std::string> calls = newCalls();
  EXPECT_EQ(calls[0], "heard before");
  EXPECT_EQ(calls[1], "scan");
}

TEST_F(KVControllerStartup, WithoutAUserSpaceFileSystemNobodyIsToldToHearOfTheDrives) {
  userFileSystemIsAvailable_ = false;
  services_.drivesWillBeObserved = [this] { window_.note("drives will be observed"); };
  controller_.initialiseController();
  EXPECT_FALSE(window_.has("drives will be observed"));
  EXPECT_FALSE(controller_.observesDrives());
}

TEST_F(KVControllerStartup, WithoutAUserSpaceFileSystemOnlyInstallOrQuitIsOffered) {
  devices_ = {&device_};
  userFileSystemIsAvailable_ = false;
  controller_.initialiseController();
  EXPECT_THAT(newCalls(), ElementsAre("makeKeyAndOrderFront",
                                      "alert InstallationIncomplete InstallationIncompleteLong"));
  ASSERT_EQ(window_.alerts.size(), 1u);
  EXPECT_EQ(window_.alerts[0].style, Alert::Style::Critical);
  EXPECT_THAT(window_.alerts[0].buttonKeys, ElementsAre("Install", "Quit"));
  window_.answerAlert(kAlertFirstButtonReturn + 1);
  EXPECT_THAT(newCalls(), ElementsAre("terminate"));
}

TEST_F(KVControllerStartup, WithoutAUserSpaceFileSystemADriveThatReportsIsNotScanned) {
  devices_ = {&device_};
  userFileSystemIsAvailable_ = false;
  int scans = 0;
  services_.discsWillBeScanned = [&scans] { ++scans; };
  controller_.initialiseController();
  DRNotificationCenter& center = DRNotificationCenter::currentRunLoopCenter();
  center.post(DRDeviceStatusChangedNotification, &device_);
  turn();
  turn();
  EXPECT_EQ(scans, 0);
  EXPECT_TRUE(window_.mediaController().arrangedObjects().empty());
}

TEST_F(KVControllerStartup, ADriveThatReportsIsScannedOnlyBehindItsReport) {
  int scans = 0;
  services_.discsWillBeScanned = [&scans] { ++scans; };
  controller_.initialiseController();
  turn();
  EXPECT_EQ(scans, 0) << "nobody has reported yet";
  DRNotificationCenter::currentRunLoopCenter().post(DRDeviceStatusChangedNotification, nullptr);
  turnUntil([&scans] { return scans > 0; });
}

TEST_F(KVControllerStartup, InstallEndsTheApplicationToo) {
  userFileSystemIsAvailable_ = false;
  controller_.initialiseController();
  window_.answerAlert(kAlertFirstButtonReturn);
  EXPECT_EQ(window_.calls.back(), "terminate");
}

TEST_F(KVControllerStartup, AReopenBringsTheWindowBackOnlyOnceStartUpHasRun) {
  EXPECT_FALSE(delegate_.applicationShouldOpenUntitledFile());
  EXPECT_TRUE(newCalls().empty());
  controller_.initialiseController();
  newCalls();
  EXPECT_FALSE(delegate_.applicationShouldOpenUntitledFile());
  EXPECT_THAT(newCalls(), ElementsAre("makeKeyAndOrderFront"));
}

TEST_F(KVControllerStartup, QuitIsRefusedDuringABurnDeferredWithAnOpenDiscAndImmediateOtherwise) {
  EXPECT_EQ(delegate_.applicationShouldTerminate(), TerminateReply::Now);
  controller_.setMediaIsMounted(true);
  EXPECT_EQ(delegate_.applicationShouldTerminate(), TerminateReply::Later);
  controller_.setBurnInProgress(true);
  newCalls();
  EXPECT_EQ(delegate_.applicationShouldTerminate(), TerminateReply::Cancel);
  EXPECT_THAT(newCalls(), ElementsAre("beep"));
}

/// Start-up with a licence agreement that nobody has agreed to yet.
class StartupWithLicense : public ControllerFixture {
 protected:
  StartupWithLicense() {
    devices_ = {&device_};
    controller_.setLicenseController(&license_);
  }

  TemporaryUserDefaults defaults_;
  RecordingLicenseWindow licenseWindow_;
  KVLicenseController license_{licenseWindow_, [this] { window_.terminate(); }};
};

TEST_F(StartupWithLicense, TheAgreementComesBeforeTheWindowAndTheDrives) {
  licenseWindow_.whileModal = [this] {
    EXPECT_FALSE(controller_.allowMainWindowUnhide());
    EXPECT_FALSE(delegate_.applicationShouldOpenUntitledFile());
    EXPECT_TRUE(newCalls().empty());
    license_.agree();
  };
  controller_.initialiseController();
  EXPECT_THAT(newCalls(), ElementsAre("makeKeyAndOrderFront", "reserve"));
}

TEST_F(StartupWithLicense, WithoutAgreementNothingFollowsButTheQuit) {
  licenseWindow_.whileModal = [this] { license_.disagree(); };
  services_.drivesWillBeObserved = [this] { window_.note("drives will be observed"); };
  controller_.initialiseController();
  EXPECT_THAT(newCalls(), ElementsAre("terminate"));
  EXPECT_FALSE(controller_.allowMainWindowUnhide());
  EXPECT_FALSE(controller_.observesDrives());
}

TEST_F(StartupWithLicense, OnceAgreedToItIsNotInTheWay) {
  licenseWindow_.whileModal = [this] { license_.agree(); };
  controller_.initialiseController();
  newCalls();
  licenseWindow_.calls.clear();
  controller_.initialiseController();
  EXPECT_THAT(licenseWindow_.calls, ElementsAre("text"));
  EXPECT_THAT(newCalls(), ElementsAre("makeKeyAndOrderFront", "reserve"));
}

TEST_F(StartupWithLicense, TheAgreementComesBeforeAMissingUserSpaceFileSystemIsTold) {
  userFileSystemIsAvailable_ = false;
  licenseWindow_.whileModal = [this] {
    EXPECT_TRUE(newCalls().empty());
    license_.agree();
  };
  controller_.initialiseController();
  EXPECT_THAT(newCalls(), ElementsAre("makeKeyAndOrderFront",
                                      "alert InstallationIncomplete InstallationIncompleteLong"));
}

TEST_F(KVControllerStartup, AStatusOfABurnMovesTheSecondHalfOfTheBar) {
  controller_.initialiseController();
  newCalls();
  DRBurnStatus status;
  status.DRStatusPercentCompleteKey = 0.5;
  DRNotificationCenter::currentRunLoopCenter().post(DRBurnStatusChangedNotification, nullptr,
                                                    status);
  turnUntil([this] { return window_.has("bar at 150/100"); });
  EXPECT_THAT(newCalls(), ElementsAre("bar determinate", "bar at 150/100"));
  status.DRStatusPercentCompleteKey.reset();
  DRNotificationCenter::currentRunLoopCenter().post(DRBurnStatusChangedNotification, nullptr,
                                                    status);
  turnUntil([this] { return window_.has("bar animates"); });
  EXPECT_THAT(newCalls(), ElementsAre("bar indeterminate", "bar animates"));
}

}  // namespace
}  // namespace kelvane::test
