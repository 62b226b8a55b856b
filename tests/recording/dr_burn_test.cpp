// SPDX-License-Identifier: GPL-2.0-or-later
//
// Burns on emulated discs by the real recorder.
#include "platform/recording/dr_burn.h"

#include <gmock/gmock.h>

#include <filesystem>

#include "burn/burn_properties.h"
#include "platform/recording/dr_notification_center.h"
#include "recording/burner_fixture.h"

namespace kelvane {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using virtualdrive::MediumKind;

constexpr size_t kBlock = 2048;

class DRBurnTest : public testing::BurnerFixture {};

TEST_F(DRBurnTest, TheFirstSessionOfABlankDiscBeginsAtBlock0AndLeavesTheDiscOpen) {
  DRDevice* device = addDrive();
  const std::string image = makeImage("first.iso", 400 * kBlock);
  const DRBurnStatus status = burn(device, image);
  ASSERT_EQ(status.DRStatusStateKey, DRStatusStateDone) << errorOf(status);
  EXPECT_EQ(status.DRStatusPercentCompleteKey, 1.0);
  EXPECT_FALSE(status.DRErrorStatusKey);
  EXPECT_EQ(blocksOf(*device->emulatedDisc(), 0, 400), contentOf(image));
  EXPECT_TRUE(device->mediaIsAppendable());
  EXPECT_FALSE(device->mediaIsBlank());
}

TEST_F(DRBurnTest, EachFurtherSessionBeginsWhereTheDriveSaysAndKeepsTheEarlierOnes) {
  DRDevice* device = addDrive();
  for (unsigned session = 1; session <= 3; ++session) {
    const size_t first = nextAddress(device);
    const std::string before = blocksOf(*device->emulatedDisc(), 0, first);
    const std::string image = makeImage("image.iso", (300 + session) * kBlock, session);
    const DRBurnStatus status = burn(device, image);
    ASSERT_EQ(status.DRStatusStateKey, DRStatusStateDone) << errorOf(status);
    EXPECT_EQ(blocksOf(*device->emulatedDisc(), first, 300 + session), contentOf(image));
    EXPECT_EQ(blocksOf(*device->emulatedDisc(), 0, first).substr(0, before.size()), before);
    EXPECT_EQ(device->status().DRDeviceMediaInfoKey->DRDeviceMediaSessionCountKey, session);
  }
}

TEST_F(DRBurnTest, ARewritableDiscIsWrittenLikeAnother) {
  DRDevice* device = addDrive(MediumKind::CdRw);
  const std::string image = makeImage("image.iso", 310 * kBlock);
  EXPECT_EQ(burn(device, image).DRStatusStateKey, DRStatusStateDone);
  EXPECT_EQ(blocksOf(*device->emulatedDisc(), 0, 310), contentOf(image));
  EXPECT_TRUE(device->mediaIsAppendable());
}

TEST_F(DRBurnTest, AnIncompleteLastBlockIsFilledUpWithZeros) {
  DRDevice* device = addDrive();
  const std::string image = makeImage("odd.iso", 320 * kBlock + 1);
  ASSERT_EQ(burn(device, image).DRStatusStateKey, DRStatusStateDone);
  const std::string expected = contentOf(image) + std::string(kBlock - 1, '\0');
  EXPECT_EQ(blocksOf(*device->emulatedDisc(), 0, 321), expected);
}

TEST_F(DRBurnTest, AnImageShorterThanATrackMayBeIsWrittenAllTheSame) {
  DRDevice* device = addDrive();
  const std::string image = makeImage("short.iso", 1);
  const DRBurnStatus status = burn(device, image);
  ASSERT_EQ(status.DRStatusStateKey, DRStatusStateDone) << errorOf(status);
  EXPECT_EQ(blocksOf(*device->emulatedDisc(), 0, 1), contentOf(image) + std::string(2047, '\0'));
  EXPECT_EQ(nextAddress(device), 11702U);
}

TEST_F(DRBurnTest, ReportsItsStatesInOrderAndItsEndOnce) {
  DRDevice* device = addDrive();
  std::vector<std::string> states;
  double fraction = 0.0;
  const void* sender = nullptr;
  DRNotificationCenter::currentRunLoopCenter().addObserver(
      this,
      [&](const Notification& notification) {
        const auto status = std::any_cast<DRBurnStatus>(notification.userInfo);
        if (states.empty() || states.back() != status.DRStatusStateKey) {
          states.push_back(status.DRStatusStateKey);
        }
        EXPECT_GE(status.DRStatusPercentCompleteKey.value_or(-1.0), fraction);
        fraction = status.DRStatusPercentCompleteKey.value_or(-1.0);
        sender = notification.object;
      },
      DRBurnStatusChangedNotification, nullptr);
  const auto burn = makeBurn(device);
  EXPECT_EQ(burn->status().DRStatusStateKey, DRStatusStateNone);
  burn->writeLayout(makeTrack(makeImage("image.iso", 2000 * kBlock)));
  EXPECT_EQ(burn->status().DRStatusStateKey, DRStatusStatePreparing);
  EXPECT_THAT(states, IsEmpty());
  waitForEnd(*burn);
  loop.deliverQueued();
  EXPECT_THAT(states,
              ElementsAre(DRStatusStatePreparing, DRStatusStateTrackWrite,
                          DRStatusStateSessionClose, DRStatusStateFinishing, DRStatusStateDone));
  EXPECT_EQ(fraction, 1.0);
  EXPECT_EQ(sender, burn.get());
}

TEST_F(DRBurnTest, TheDriveIsBusyWhileItIsWrittenTo) {
  DRDevice* device = addDrive();
  const auto burn = makeBurn(device);
  EXPECT_FALSE(device->mediaIsBusy());
  burn->writeLayout(makeTrack(makeImage("image.iso", 300 * kBlock)));
  EXPECT_TRUE(device->mediaIsBusy());
  EXPECT_NE(burn->recorderProcessIdentifier(), 0);
  ASSERT_EQ(waitForEnd(*burn).DRStatusStateKey, DRStatusStateDone);
  EXPECT_FALSE(device->mediaIsBusy());
}

TEST_F(DRBurnTest, GoesOnWithoutTheObjectThatStartedIt) {
  DRDevice* device = addDrive();
  const std::string image = makeImage("image.iso", 300 * kBlock);
  auto burn = makeBurn(device);
  burn->writeLayout(makeTrack(image));
  ASSERT_TRUE(
      loop.runUntil([&burn] { return burn->status().DRStatusStateKey != DRStatusStatePreparing; }));
  burn.reset();
  EXPECT_TRUE(device->mediaIsBusy());
  ASSERT_TRUE(loop.runUntil([device] { return !device->mediaIsBusy(); }));
  EXPECT_EQ(blocksOf(*device->emulatedDisc(), 0, 300), contentOf(image));
  EXPECT_EQ(device->status().DRDeviceMediaInfoKey->DRDeviceMediaSessionCountKey, 1U);
}

TEST_F(DRBurnTest, WritesOneLayoutInItsLife) {
  DRDevice* device = addDrive();
  const auto burn = makeBurn(device);
  burn->writeLayout(makeTrack(makeImage("first.iso", 300 * kBlock)));
  burn->writeLayout(makeTrack(makeImage("second.iso", 300 * kBlock, 2)));
  ASSERT_EQ(waitForEnd(*burn).DRStatusStateKey, DRStatusStateDone);
  burn->writeLayout(makeTrack(makeImage("third.iso", 300 * kBlock, 3)));
  EXPECT_EQ(burn->status().DRStatusStateKey, DRStatusStateDone);
  EXPECT_EQ(device->status().DRDeviceMediaInfoKey->DRDeviceMediaSessionCountKey, 1U);
}

TEST_F(DRBurnTest, AsksTheDriveForTheSpeedThatIsAskedFor) {
  DRDevice* device = addDrive();
  auto burn = makeBurn(device);
  constexpr int kDoubleSpeedTag = 2;
  burn->setProperties(cdBurnProperties(kDoubleSpeedTag));
  burn->writeLayout(makeTrack(makeImage("image.iso", 300 * kBlock)));
  const DRBurnStatus status = waitForEnd(*burn);
  ASSERT_EQ(status.DRStatusStateKey, DRStatusStateDone) << errorOf(status);
  // The drive takes the nearest of its own speeds; its lowest is four times CD speed.
  EXPECT_THAT(contentOf(*device->emulatedDisc() + "/drive.json"),
              HasSubstr("\"write_speed\": 706"));
}

TEST_F(DRBurnTest, SwitchesUnderrunProtectionAsAskedFor) {
  // Bytes 2 and 3 of the write parameters page: BUFE and track at once, a further session and a
  // track of data (MMC-5, 7.5.4). libburn puts a page of its own in its place when it is done.
  for (const int protection : {0, 1}) {
    DRDevice* device = addDrive();
    auto burn = makeBurn(device);
    DRBurnProperties properties;
    properties.DRBurnUnderrunProtectionKey = protection;
    burn->setProperties(properties);
    burn->writeLayout(makeTrack(makeImage("image.iso", 300 * kBlock)));
    int lastOfData = -1;
    ASSERT_TRUE(loop.runUntil([&] {
      const std::string drive = contentOf(*device->emulatedDisc() + "/drive.json");
      if (drive.find("\"053201c4") != std::string::npos) lastOfData = 0;
      if (drive.find("\"053241c4") != std::string::npos) lastOfData = 1;
      return isFinal(burn->status());
    }));
    EXPECT_EQ(burn->status().DRStatusStateKey, DRStatusStateDone);
    EXPECT_EQ(lastOfData, protection);
  }
}

}  // namespace
}  // namespace kelvane
