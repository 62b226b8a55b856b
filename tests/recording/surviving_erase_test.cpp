// SPDX-License-Identifier: GPL-2.0-or-later
//
// A disc that is being erased is erased to the end, whatever becomes of the application.
#include <gmock/gmock.h>

#include <QProcess>
#include <csignal>

#include "platform/recording/dr_notification_center.h"
#include "recording/burner_fixture.h"

namespace kelvane {
namespace {

using ::testing::HasSubstr;
using virtualdrive::MediumKind;

constexpr size_t kBlock = 2048;

class SurvivingEraseTest : public testing::BurnerFixture {
 protected:
  SurvivingEraseTest() : device(addDrive(MediumKind::CdRw)) {
    EXPECT_EQ(burn(device, makeImage("image.iso", 300 * kBlock)).DRStatusStateKey,
              DRStatusStateDone);
  }

  DRDevice* device;
};

TEST_F(SurvivingEraseTest, AnApplicationThatIsKilledDoesNotStopTheErase) {
  QProcess application;
  application.start(ERASE_STARTER, {QString::fromStdString(*device->emulatedDisc())});
  ASSERT_TRUE(application.waitForStarted(-1));
  ASSERT_TRUE(loop.runUntil([&application] {
    return application.canReadLine() || application.state() == QProcess::NotRunning;
  }));
  ASSERT_EQ(application.readLine().toStdString(), "erasing\n");
  application.kill();
  ASSERT_TRUE(application.waitForFinished(-1));
  EXPECT_EQ(application.exitStatus(), QProcess::CrashExit);
  ASSERT_TRUE(loop.runUntil([this] { return device->mediaIsBlank(); }));
  ASSERT_TRUE(loop.runUntil([this] { return !device->mediaIsBusy(); }));
  EXPECT_TRUE(device->mediaIsAppendable());
}

TEST_F(SurvivingEraseTest, SignalsThatEndOtherProgramsDoNotEndTheRecorder) {
  const auto erase = DRErase::eraseForDevice(device);
  erase->start();
  const auto recorder = static_cast<pid_t>(erase->recorderProcessIdentifier());
  // It is told so early only when it has seen to its signals.
  ASSERT_TRUE(loop.runUntil([recorder] { return getsid(recorder) == recorder; }));
  std::vector<std::string> states;
  DRNotificationCenter::currentRunLoopCenter().addObserver(
      this,
      [&](const Notification& notification) {
        states.push_back(std::any_cast<DREraseStatus>(notification.userInfo).DRStatusStateKey);
      },
      DREraseStatusChangedNotification, erase.get());
  ASSERT_TRUE(loop.runUntil([&states] { return states.size() >= 2; }));
  for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGPIPE, SIGQUIT}) kill(recorder, number);
  const DREraseStatus status = waitForEnd(*erase);
  ASSERT_EQ(status.DRStatusStateKey, DRStatusStateDone) << errorOf(status);
  EXPECT_TRUE(device->mediaIsBlank());
}

TEST_F(SurvivingEraseTest, ARecorderThatIsKilledIsReportedAndTheDriveIsFreeAgain) {
  const auto erase = DRErase::eraseForDevice(device);
  erase->start();
  ASSERT_EQ(kill(static_cast<pid_t>(erase->recorderProcessIdentifier()), SIGKILL), 0);
  const DREraseStatus status = waitForEnd(*erase);
  EXPECT_EQ(status.DRStatusStateKey, DRStatusStateFailed);
  EXPECT_THAT(errorOf(status), HasSubstr("signal 9"));
  EXPECT_THAT(errorOf(status), HasSubstr("may be erased in part"));
  EXPECT_FALSE(device->mediaIsBusy());
  const auto again = DRErase::eraseForDevice(device);
  again->start();
  EXPECT_EQ(waitForEnd(*again).DRStatusStateKey, DRStatusStateDone);
  EXPECT_TRUE(device->mediaIsBlank());
}

}  // namespace
}  // namespace kelvane
