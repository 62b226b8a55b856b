// SPDX-License-Identifier: GPL-2.0-or-later
//
// Burns that cannot succeed: each ends as failed, says why, and leaves the disc as it was.
#include <gmock/gmock.h>
#include <sys/resource.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>

#include "platform/recording/dr_burn.h"
#include "platform/recording/file_lock.h"
#include "recording/burner_fixture.h"

namespace kelvane {
namespace {

using ::testing::HasSubstr;
using ::testing::MatchesRegex;
using virtualdrive::MediumKind;

constexpr size_t kBlock = 2048;

class FailingBurnTest : public testing::BurnerFixture {
 protected:
  // Burns the image, which must fail without a change to the disc; gives the reason.
  std::string reasonOf(DRDevice* device, const std::string& image) {
    const std::string before = stateOf(device);
    const DRBurnStatus status = burn(device, image);
    EXPECT_EQ(status.DRStatusStateKey, DRStatusStateFailed);
    EXPECT_EQ(stateOf(device), before);
    EXPECT_FALSE(device->mediaIsBusy());
    return errorOf(status);
  }
};

TEST_F(FailingBurnTest, ASessionThatDoesNotFitIsNotBegun) {
  DRDevice* device = addDrive(MediumKind::CdR, 1000);
  EXPECT_THAT(reasonOf(device, makeImage("image.iso", 1001 * kBlock)),
              MatchesRegex("The session needs 1001 blocks, but only [0-9]+ are free on the disc."));
  EXPECT_TRUE(device->mediaIsBlank());
}

TEST_F(FailingBurnTest, ASessionThatJustFitsIsWritten) {
  DRDevice* device = addDrive(MediumKind::CdR, 1000);
  const auto free = device->status().DRDeviceMediaInfoKey->DRDeviceMediaBlocksFreeKey;
  const size_t blocks = static_cast<size_t>(free.value());
  const std::string image = makeImage("image.iso", blocks * kBlock);
  const DRBurnStatus status = burn(device, image);
  ASSERT_EQ(status.DRStatusStateKey, DRStatusStateDone) << errorOf(status);
  EXPECT_EQ(blocksOf(*device->emulatedDisc(), 0, blocks), contentOf(image));
}

TEST_F(FailingBurnTest, AMissingImageIsNamed) {
  EXPECT_THAT(reasonOf(addDrive(), folder.file("nothing.iso")),
              HasSubstr("nothing.iso cannot be read: No such file or directory."));
}

TEST_F(FailingBurnTest, AnEmptyImageIsRefused) {
  EXPECT_THAT(reasonOf(addDrive(), makeImage("empty.iso", 0)), HasSubstr("is empty"));
}

TEST_F(FailingBurnTest, AFolderIsNoImage) {
  std::filesystem::create_directory(folder.file("folder.iso"));
  EXPECT_THAT(reasonOf(addDrive(), folder.file("folder.iso")), HasSubstr("is not a file"));
}

TEST_F(FailingBurnTest, AnImageOf2GibibytesIsRefused) {
  const std::string image = makeImage("huge.iso", 1);
  std::filesystem::resize_file(image, uintmax_t{1} << 31);
  EXPECT_THAT(reasonOf(addDrive(), image), HasSubstr("2 GiB"));
}

TEST_F(FailingBurnTest, AClosedDiscTakesNoFurtherSession) {
  DRDevice* device = addDrive();
  const auto closing = makeBurn(device);
  closing->setAppendable(false);
  closing->writeLayout(makeTrack(makeImage("only.iso", 300 * kBlock)));
  ASSERT_EQ(waitForEnd(*closing).DRStatusStateKey, DRStatusStateDone);
  EXPECT_THAT(reasonOf(device, makeImage("image.iso", 300 * kBlock)), HasSubstr("closed"));
}

TEST_F(FailingBurnTest, WithoutADiscNothingIsWrittenAndTheTrayStaysOpen) {
  DRDevice* device = addDrive();
  ASSERT_TRUE(device->ejectMedia());
  EXPECT_THAT(reasonOf(device, makeImage("image.iso", 300 * kBlock)), HasSubstr("no disc"));
  EXPECT_FALSE(device->mediaIsPresent());
}

TEST_F(FailingBurnTest, VerificationIsNotAvailable) {
  const auto burn = makeBurn(addDrive());
  burn->setVerifyDisc(true);
  burn->writeLayout(makeTrack(makeImage("image.iso", 300 * kBlock)));
  EXPECT_EQ(burn->status().DRStatusStateKey, DRStatusStateFailed);
  EXPECT_THAT(errorOf(burn->status()), HasSubstr("Verifying"));
}

TEST_F(FailingBurnTest, AnIncompleteInstallationIsNamed) {
  setenv("KELVANEFS_EXECUTABLE", folder.file("bin/kelvanefs").c_str(), 1);
  EXPECT_THAT(reasonOf(addDrive(), makeImage("image.iso", 300 * kBlock)),
              HasSubstr(folder.file("libexec/kelvanefs")));
}

TEST_F(FailingBurnTest, ADeviceWithoutADriveCannotBurn) {
  const auto burn = DRBurn::burnForDevice(nullptr);
  burn->writeLayout(makeTrack(makeImage("image.iso", 300 * kBlock)));
  EXPECT_EQ(burn->status().DRStatusStateKey, DRStatusStateFailed);
}

TEST_F(FailingBurnTest, TwoRecordingsCannotShareADrive) {
  DRDevice* device = addDrive();
  const auto other =
      FileLock::acquire(*device->emulatedDisc() + "/sectors", std::chrono::milliseconds(0));
  const DRBurnStatus status = burn(device, makeImage("image.iso", 300 * kBlock));
  EXPECT_EQ(status.DRStatusStateKey, DRStatusStateFailed);
  EXPECT_THAT(errorOf(status), HasSubstr("Another recording"));
  EXPECT_TRUE(device->mediaIsBlank());
}

TEST_F(FailingBurnTest, TheDriveIsQuotedWhenItFailsToWrite) {
  DRDevice* device = addDrive();
  // From one block on the disc's file cannot grow, as if the laser gave out.
  const rlimit limit{.rlim_cur = 500 * kBlock, .rlim_max = RLIM_INFINITY};
  rlimit before{};
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
  const std::string image = makeImage("image.iso", 1000 * kBlock);
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
  const DRBurnStatus status = burn(device, image);
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
  EXPECT_EQ(status.DRStatusStateKey, DRStatusStateFailed);
  EXPECT_THAT(errorOf(status), MatchesRegex("Writing the disc failed. .+"));
}

TEST_F(FailingBurnTest, ARecorderThatIsKilledIsAFailureThatNamesTheSignal) {
  DRDevice* device = addDrive();
  const auto burn = makeBurn(device);
  burn->writeLayout(makeTrack(makeImage("image.iso", 5000 * kBlock)));
  ASSERT_EQ(kill(static_cast<pid_t>(burn->recorderProcessIdentifier()), SIGKILL), 0);
  const DRBurnStatus status = waitForEnd(*burn);
  EXPECT_EQ(status.DRStatusStateKey, DRStatusStateFailed);
  EXPECT_THAT(errorOf(status), HasSubstr("signal 9"));
  EXPECT_FALSE(device->mediaIsBusy());
  EXPECT_TRUE(device->ejectMedia());
}

TEST_F(FailingBurnTest, AfterARecordingThatWasCutOffNothingIsAddedAndTheEarlierSessionsStay) {
  DRDevice* device = addDrive();
  const std::string image = makeImage("first.iso", 300 * kBlock);
  ASSERT_EQ(burn(device, image).DRStatusStateKey, DRStatusStateDone);
  leaveASessionUnfinished(device);
  EXPECT_TRUE(device->mediaIsPresent());
  EXPECT_FALSE(device->mediaIsAppendable());
  EXPECT_THAT(reasonOf(device, image), HasSubstr("never finished"));
  EXPECT_EQ(blocksOf(*device->emulatedDisc(), 0, 300), contentOf(image));
}

}  // namespace
}  // namespace kelvane
