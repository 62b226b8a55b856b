// SPDX-License-Identifier: GPL-2.0-or-later
//
// Erases in drives that fail: each ends, says why, and lets go of the drive.
#include <gmock/gmock.h>

#include <fstream>

#include "platform/recording/dr_notification_center.h"
#include "recording/burner_fixture.h"

namespace kelvane {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;

class FailingEraseTest : public testing::BurnerFixture {
 protected:
  DREraseStatus eraseWithFault(DRDevice* device, const std::string& fault) {
    std::ofstream(*device->emulatedDisc() + "/faults") << fault << "\n";
    const auto erase = DRErase::eraseForDevice(device);
    erase->start();
    const DREraseStatus status = waitForEnd(*erase);
    EXPECT_FALSE(device->mediaIsBusy());
    return status;
  }

  std::string reasonOf(DRDevice* device, const std::string& fault) {
    const DREraseStatus status = eraseWithFault(device, fault);
    EXPECT_EQ(status.DRStatusStateKey, DRStatusStateFailed);
    return errorOf(status);
  }
};

TEST_F(FailingEraseTest, ADiscThatTheDriveCannotEraseIsLeftAsItIsAndTheDrivesWordsAreGiven) {
  for (const char* media : {"cd-rw", "dvd-rw", "dvd-rw-ro"}) {
    DRDevice* device = addPreparedDrive(media);
    const std::string before = stateOf(device);
    EXPECT_THAT(reasonOf(device, "on blank: sense 3/51/00"), HasSubstr("[3 51 00]")) << media;
    EXPECT_EQ(stateOf(device), before) << media;
    EXPECT_FALSE(device->mediaIsBlank()) << media;
  }
}

TEST_F(FailingEraseTest, ADriveThatDisappearsEndsTheErase) {
  DRDevice* device = addPreparedDrive("cd-rw");
  EXPECT_FALSE(reasonOf(device, "on blank: gone").empty());
}

TEST_F(FailingEraseTest, ABeginningThatCannotBeOverwrittenIsReported) {
  DRDevice* device = addPreparedDrive("dvd+rw");
  EXPECT_THAT(reasonOf(device, "on write: sense 3/0C/00"), HasSubstr("[3 0C 00]"));
  EXPECT_FALSE(device->mediaIsBlank());
}

TEST_F(FailingEraseTest, ABeginningThatIsOverwrittenOnlyInPartIsReported) {
  DRDevice* device = addPreparedDrive("dvd+rw");
  EXPECT_THAT(reasonOf(device, "on write 2: sense 3/0C/00"),
              AllOf(HasSubstr("cannot be overwritten"), HasSubstr("[3 0C 00]")));
  EXPECT_FALSE(device->mediaIsBlank());
}

// What was overwritten until then makes the disc blank to everybody; the rest of the volume's
// description is still there.
TEST_F(FailingEraseTest, ABeginningOfWhichTheEndIsNotOverwrittenIsReportedToo) {
  DRDevice* device = addPreparedDrive("dvd+rw", 2000000);
  EXPECT_THAT(reasonOf(device, "on write 12: sense 3/0C/00"),
              AllOf(HasSubstr("cannot be overwritten"), HasSubstr("[3 0C 00]")));
}

TEST_F(FailingEraseTest, ADriveThatIsRefusedIsNamed) {
  DRDevice* device = addPreparedDrive("cd-rw");
  const std::string before = stateOf(device);
  int told = 0;
  auto& center = DRNotificationCenter::currentRunLoopCenter();
  center.addObserver(
      &told, [&told](const Notification&) { ++told; }, DRDeviceStatusChangedNotification, device);
  loop.deliverQueued();
  told = 0;
  EXPECT_FALSE(reasonOf(device, "exclusive: refused").empty());
  EXPECT_EQ(stateOf(device), before);
  // Volumes were taken away for it, and whoever lists the disc has to look again.
  EXPECT_TRUE(loop.runUntil([&told] { return told > 0; }));
  center.removeObserver(&told);
}

TEST_F(FailingEraseTest, ADriveThatShowsWhatItDidOnlyAfterLoadingAnewIsLoadedAnew) {
  for (const char* media : {"cd-rw", "dvd-rw"}) {
    DRDevice* device = addPreparedDrive(media);
    const DREraseStatus status = eraseWithFault(device, "after blank: stale");
    EXPECT_EQ(status.DRStatusStateKey, DRStatusStateDone) << media << ": " << errorOf(status);
    EXPECT_TRUE(device->mediaIsBlank()) << media;
  }
}

TEST_F(FailingEraseTest, ATrayOrMediumThatDrawsAttentionMeanwhileDoesNotMatter) {
  DRDevice* device = addPreparedDrive("cd-rw");
  const DREraseStatus status = eraseWithFault(device, "after blank: attention");
  EXPECT_EQ(status.DRStatusStateKey, DRStatusStateDone) << errorOf(status);
  EXPECT_TRUE(device->mediaIsBlank());
}

}  // namespace
}  // namespace kelvane
