// SPDX-License-Identifier: GPL-2.0-or-later
//
// Erases on emulated discs by the real recorder.
#include "platform/recording/dr_erase.h"

#include <gmock/gmock.h>

#include "platform/recording/dr_notification_center.h"
#include "platform/recording/file_lock.h"
#include "recording/burner_fixture.h"

namespace kelvane {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using virtualdrive::MediumKind;

constexpr size_t kBlock = 2048;

class DREraseTest : public testing::BurnerFixture {
 protected:
  DREraseStatus erase(DRDevice* device) {
    const auto erase = DRErase::eraseForDevice(device);
    erase->start();
    return waitForEnd(*erase);
  }

  // A drive with a disc of one session.
  DRDevice* addWrittenDrive(MediumKind medium = MediumKind::CdRw) {
    DRDevice* device = addDrive(medium);
    const DRBurnStatus status = burn(device, makeImage("first.iso", 310 * kBlock));
    EXPECT_EQ(status.DRStatusStateKey, DRStatusStateDone) << errorOf(status);
    return device;
  }

  // An erase that must fail without a change to the disc; gives the reason.
  std::string reasonOf(DRDevice* device) {
    const std::string before = stateOf(device);
    const DREraseStatus status = erase(device);
    EXPECT_EQ(status.DRStatusStateKey, DRStatusStateFailed);
    EXPECT_EQ(stateOf(device), before);
    EXPECT_FALSE(device->mediaIsBusy());
    return errorOf(status);
  }

  // How often the device's status is announced from now on.
  void countDeviceChanges(const DRDevice* device) {
    DRNotificationCenter::currentRunLoopCenter().addObserver(
        this, [this](const Notification&) { ++deviceChanges; }, DRDeviceStatusChangedNotification,
        device);
    loop.deliverQueued();
    deviceChanges = 0;
  }

  int deviceChanges = 0;
};

TEST_F(DREraseTest, ARewritableCdBecomesBlankAndCanBeWrittenFromItsBeginning) {
  DRDevice* device = addWrittenDrive();
  ASSERT_EQ(burn(device, makeImage("second.iso", 300 * kBlock, 2)).DRStatusStateKey,
            DRStatusStateDone);
  const DREraseStatus status = erase(device);
  ASSERT_EQ(status.DRStatusStateKey, DRStatusStateDone) << errorOf(status);
  EXPECT_EQ(status.DRStatusPercentCompleteKey, 1.0);
  EXPECT_TRUE(device->mediaIsBlank());
  EXPECT_TRUE(device->mediaIsAppendable());
  EXPECT_EQ(device->status().DRDeviceMediaInfoKey->DRDeviceMediaSessionCountKey, 0U);
  EXPECT_EQ(nextAddress(device), 0U);
  const std::string image = makeImage("again.iso", 320 * kBlock, 3);
  ASSERT_EQ(burn(device, image).DRStatusStateKey, DRStatusStateDone);
  EXPECT_EQ(blocksOf(*device->emulatedDisc(), 0, 320), contentOf(image));
}

TEST_F(DREraseTest, AClosedDiscCanBeErasedToo) {
  DRDevice* device = addDrive(MediumKind::CdRw);
  const auto closing = makeBurn(device);
  closing->setAppendable(false);
  closing->writeLayout(makeTrack(makeImage("only.iso", 300 * kBlock)));
  ASSERT_EQ(waitForEnd(*closing).DRStatusStateKey, DRStatusStateDone);
  ASSERT_FALSE(device->mediaIsAppendable());
  EXPECT_EQ(erase(device).DRStatusStateKey, DRStatusStateDone);
  EXPECT_TRUE(device->mediaIsBlank());
}

TEST_F(DREraseTest, ADiscWithAnUnfinishedSessionIsAsGoodAsNewAfterwards) {
  for (const bool first : {true, false}) {
    DRDevice* device = first ? addDrive(MediumKind::CdRw) : addWrittenDrive();
    leaveASessionUnfinished(device);
    ASSERT_FALSE(device->mediaIsAppendable());
    const DREraseStatus status = erase(device);
    ASSERT_EQ(status.DRStatusStateKey, DRStatusStateDone) << errorOf(status);
    EXPECT_TRUE(device->mediaIsBlank());
    EXPECT_TRUE(device->mediaIsAppendable());
  }
}

TEST_F(DREraseTest, ABlankDiscIsLeftAsItIs) {
  DRDevice* device = addDrive(MediumKind::CdRw);
  const std::string before = stateOf(device);
  EXPECT_EQ(erase(device).DRStatusStateKey, DRStatusStateDone);
  EXPECT_EQ(stateOf(device), before);
}

TEST_F(DREraseTest, AWriteOnceDiscIsRefusedAndNamed) {
  EXPECT_EQ(reasonOf(addWrittenDrive(MediumKind::CdR)),
            "The disc (CDR) is not rewritable and cannot be erased.");
}

TEST_F(DREraseTest, WithoutADiscThereIsNothingToErase) {
  DRDevice* device = addDrive(MediumKind::CdRw);
  ASSERT_TRUE(device->ejectMedia());
  EXPECT_EQ(reasonOf(device), "There is no disc in the drive.");
}

TEST_F(DREraseTest, ReportsItsStatesInOrderAndItsEndOnce) {
  DRDevice* device = addWrittenDrive();
  std::vector<std::string> states;
  double fraction = 0.0;
  const auto erase = DRErase::eraseForDevice(device);
  DRNotificationCenter::currentRunLoopCenter().addObserver(
      this,
      [&](const Notification& notification) {
        const auto status = std::any_cast<DREraseStatus>(notification.userInfo);
        if (states.empty() || states.back() != status.DRStatusStateKey) {
          states.push_back(status.DRStatusStateKey);
        }
        EXPECT_GE(status.DRStatusPercentCompleteKey.value_or(-1.0), fraction);
        fraction = status.DRStatusPercentCompleteKey.value_or(-1.0);
      },
      DREraseStatusChangedNotification, erase.get());
  EXPECT_EQ(erase->status().DRStatusStateKey, DRStatusStateNone);
  erase->start();
  erase->start();
  EXPECT_EQ(erase->status().DRStatusStateKey, DRStatusStatePreparing);
  waitForEnd(*erase);
  loop.deliverQueued();
  EXPECT_THAT(states, ElementsAre(DRStatusStatePreparing, DRStatusStateErasing,
                                  DRStatusStateFinishing, DRStatusStateDone));
  EXPECT_EQ(fraction, 1.0);
}

TEST_F(DREraseTest, TheDriveIsBusyMeanwhileAndBothChangesAreAnnounced) {
  DRDevice* device = addWrittenDrive();
  countDeviceChanges(device);
  const auto erase = DRErase::eraseForDevice(device);
  erase->start();
  EXPECT_TRUE(device->mediaIsBusy());
  loop.deliverQueued();
  EXPECT_GE(deviceChanges, 1);
  waitForEnd(*erase);
  EXPECT_FALSE(device->mediaIsBusy());
  deviceChanges = 0;
  loop.deliverQueued();
  EXPECT_GE(deviceChanges, 1);
}

TEST_F(DREraseTest, TheEndIsAnnouncedAlsoWhereNothingHasChanged) {
  DRDevice* device = addWrittenDrive(MediumKind::CdR);
  const auto erase = DRErase::eraseForDevice(device);
  erase->start();
  countDeviceChanges(device);
  waitForEnd(*erase);
  loop.deliverQueued();
  EXPECT_GE(deviceChanges, 1);
}

TEST_F(DREraseTest, GoesOnWithoutTheObjectThatStartedIt) {
  DRDevice* device = addWrittenDrive();
  auto erase = DRErase::eraseForDevice(device);
  erase->start();
  erase.reset();
  ASSERT_TRUE(loop.runUntil([device] { return device->mediaIsBlank(); }));
  EXPECT_TRUE(loop.runUntil([device] { return !device->mediaIsBusy(); }));
}

TEST_F(DREraseTest, ADriveThatIsWrittenToIsNotErased) {
  DRDevice* device = addWrittenDrive();
  const auto burn = makeBurn(device);
  burn->writeLayout(makeTrack(makeImage("second.iso", 300 * kBlock)));
  const auto erase = DRErase::eraseForDevice(device);
  erase->start();
  EXPECT_EQ(erase->status().DRStatusStateKey, DRStatusStateFailed);
  EXPECT_EQ(errorOf(erase->status()), "Another recording is running on this drive.");
  EXPECT_TRUE(device->mediaIsBusy());
  ASSERT_EQ(waitForEnd(*burn).DRStatusStateKey, DRStatusStateDone);
  EXPECT_EQ(device->status().DRDeviceMediaInfoKey->DRDeviceMediaSessionCountKey, 2U);
}

TEST_F(DREraseTest, ADriveThatAnotherProgramHasTakenIsNotErased) {
  DRDevice* device = addWrittenDrive();
  const auto taken = FileLock::acquire(*device->emulatedDisc(), std::chrono::milliseconds(0));
  ASSERT_TRUE(taken);
  EXPECT_EQ(reasonOf(device), "Another program uses the drive.");
}

TEST_F(DREraseTest, NobodyElseCanTakeTheDriveMeanwhile) {
  DRDevice* device = addWrittenDrive();
  const auto erase = DRErase::eraseForDevice(device);
  erase->start();
  EXPECT_TRUE(FileLock::isHeld(*device->emulatedDisc()));
  waitForEnd(*erase);
  EXPECT_FALSE(FileLock::isHeld(*device->emulatedDisc()));
}

TEST_F(DREraseTest, AnEraseWithoutADriveFails) {
  const auto erase = DRErase::eraseForDevice(nullptr);
  erase->start();
  EXPECT_THAT(errorOf(erase->status()), HasSubstr("no drive"));
}

}  // namespace
}  // namespace kelvane
