// SPDX-License-Identifier: GPL-2.0-or-later
//
// Erases of the rewritable DVDs: what each kind becomes by it, as the drive itself tells.
#include <gmock/gmock.h>

#include "platform/recording/mmc/configuration.h"
#include "recording/burner_fixture.h"

namespace kelvane {
namespace {

using ::testing::HasSubstr;
using virtualdrive::MediumKind;

constexpr size_t kBlock = 2048;

class DvdEraseTest : public testing::BurnerFixture {
 protected:
  void eraseTo(DRDevice* device, mmc::Profile expected) {
    ASSERT_FALSE(device->mediaIsBlank());
    const auto erase = DRErase::eraseForDevice(device);
    erase->start();
    const DREraseStatus status = waitForEnd(*erase);
    ASSERT_EQ(status.DRStatusStateKey, DRStatusStateDone) << errorOf(status);
    EXPECT_TRUE(device->mediaIsBlank());
    EXPECT_EQ(profileOf(device), static_cast<int>(expected));
  }

  // The drive's current profile (MMC-5, 6.6.3).
  int profileOf(const DRDevice* device) {
    std::vector<uint8_t> reply(8);
    const std::vector<uint8_t> getConfiguration{0x46, 0, 0, 0, 0, 0, 0, 0, 8, 0};
    const auto drive = open(*device->emulatedDisc());
    drive.execute(getConfiguration, reply, {});  // May tell of the changed medium first.
    EXPECT_TRUE(drive.execute(getConfiguration, reply, {}).good());
    return reply[6] << 8 | reply[7];
  }
};

TEST_F(DvdEraseTest, ASequentialDvdRwBecomesBlank) {
  DRDevice* device = addPreparedDrive("dvd-rw");
  eraseTo(device, mmc::Profile::DvdRwSequential);
  EXPECT_TRUE(device->mediaIsAppendable());
  EXPECT_EQ(device->status().DRDeviceMediaInfoKey->DRDeviceMediaSessionCountKey, 0U);
}

TEST_F(DvdEraseTest, AFormattedDvdRwBecomesABlankSequentialOne) {
  DRDevice* device = addPreparedDrive("dvd-rw-ro");
  ASSERT_EQ(profileOf(device), static_cast<int>(mmc::Profile::DvdRwRestrictedOverwrite));
  eraseTo(device, mmc::Profile::DvdRwSequential);
  EXPECT_TRUE(device->mediaIsAppendable());
}

TEST_F(DvdEraseTest, ADvdPlusRwStaysFormattedAndNothingIsFoundOnIt) {
  constexpr size_t kOverwritten = 272;
  DRDevice* device = addPreparedDrive("dvd+rw", 400 * kBlock);
  ASSERT_THAT(blocksOf(*device->emulatedDisc(), 16, 1), HasSubstr("CD001"));
  const std::string later = blocksOf(*device->emulatedDisc(), kOverwritten, 100);
  ASSERT_NE(later.find_first_not_of('\0'), std::string::npos);
  eraseTo(device, mmc::Profile::DvdPlusRw);
  const std::string beginning = blocksOf(*device->emulatedDisc(), 0, kOverwritten);
  EXPECT_EQ(beginning.find_first_not_of('\0'), std::string::npos);
  EXPECT_TRUE(blocksOf(*device->emulatedDisc(), kOverwritten, 100) == later);
}

TEST_F(DvdEraseTest, ADvdPlusRwThatIsFormattedNoFurtherThanItsVolumeReachesIsErasedToo) {
  DRDevice* device = addPreparedDrive("dvd+rw", 1);
  eraseTo(device, mmc::Profile::DvdPlusRw);
}

TEST_F(DvdEraseTest, ADvdPlusRwThatIsFormattedAndWasNeverWrittenIsBlank) {
  constexpr MediumKind kKind = MediumKind::DvdPlusRw;
  DRDevice* device = addDrive(kKind, virtualdrive::capacityBounds(kKind).standard);
  const std::vector<uint8_t> formatUnit{0x04, 0x11, 0, 0, 0, 0};
  const std::vector<uint8_t> parameters{0, 0x02, 0, 8, 0, 0x23, 0x05, 0x40, 0x26 << 2, 0, 0, 0};
  const auto drive = open(*device->emulatedDisc());
  drive.execute(formatUnit, {}, parameters);  // May tell of something else first.
  ASSERT_TRUE(drive.execute(formatUnit, {}, parameters).good());
  EXPECT_TRUE(device->mediaIsBlank());
}

TEST_F(DvdEraseTest, ADvdPlusRwWithSomethingOtherThanAVolumeIsNotBlank) {
  DRDevice* device = addPreparedDrive("dvd+rw");
  const auto drive = open(*device->emulatedDisc());
  const std::vector<uint8_t> zeros(16 * kBlock);
  std::vector<uint8_t> archive(16 * kBlock);
  archive[257] = 'u';
  const auto write = [&drive](uint8_t block, const std::vector<uint8_t>& data) {
    const std::vector<uint8_t> command{0x2A, 0, 0, 0, 0, block, 0, 0, 16, 0};
    drive.execute(command, {}, data);  // May tell of something else first.
    return drive.execute(command, {}, data).good();
  };
  ASSERT_TRUE(write(0, archive));
  ASSERT_TRUE(write(16, zeros));
  EXPECT_FALSE(device->mediaIsBlank());
  ASSERT_TRUE(write(0, zeros));
  EXPECT_TRUE(device->mediaIsBlank());
}

TEST_F(DvdEraseTest, ANewDiscOfEitherKindIsLeftAsItIs) {
  for (const MediumKind kind : {MediumKind::DvdRw, MediumKind::DvdPlusRw}) {
    DRDevice* device = addDrive(kind, virtualdrive::capacityBounds(kind).standard);
    const std::string before = stateOf(device);
    const auto erase = DRErase::eraseForDevice(device);
    erase->start();
    EXPECT_EQ(waitForEnd(*erase).DRStatusStateKey, DRStatusStateDone);
    EXPECT_EQ(stateOf(device), before);
  }
}

TEST_F(DvdEraseTest, WriteOnceDvdsAreRefusedAndNamed) {
  for (const char* media : {"dvd-r", "dvd+r"}) {
    DRDevice* device = addPreparedDrive(media);
    const std::string before = stateOf(device);
    const auto erase = DRErase::eraseForDevice(device);
    erase->start();
    const DREraseStatus status = waitForEnd(*erase);
    EXPECT_EQ(status.DRStatusStateKey, DRStatusStateFailed);
    EXPECT_THAT(errorOf(status), HasSubstr("is not rewritable and cannot be erased"));
    EXPECT_EQ(stateOf(device), before);
  }
}

}  // namespace
}  // namespace kelvane
