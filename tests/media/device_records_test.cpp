// SPDX-License-Identifier: GPL-2.0-or-later
#include <gtest/gtest.h>

#include "media/fake_volume_services.h"
#include "media/media_scan.h"
#include "media/recorded_log.h"
#include "volumes/fake_device.h"

namespace kelvane {
namespace {

using Lines = std::vector<std::string>;
using std::chrono::milliseconds;

// 680.0 MB in blocks of 2048 bytes.
constexpr int64_t kFullCdBlocks = 680 * 512;

class DeviceRecordsTest : public testing::Test {
 protected:
  std::vector<DeviceRecord> build(std::vector<DRDevice*> devices) {
    return buildDeviceRecords(devices, services_);
  }

  DeviceRecord buildOne() {
    const std::vector<DeviceRecord> records = build({&device_});
    EXPECT_EQ(records.size(), 1U);
    return records.empty() ? DeviceRecord() : records[0];
  }

  test::FakeDevice device_{"disk2"};
  test::FakeVolumeServices services_;
  test::RecordedLog log_;
};

TEST_F(DeviceRecordsTest, WithoutDrivesTheListIsEmpty) {
  EXPECT_TRUE(build({}).empty());
}

TEST_F(DeviceRecordsTest, ABusyDriveIsAskedNothingElse) {
  device_.busy = true;
  EXPECT_TRUE(build({&device_}).empty());
  EXPECT_EQ(device_.questions, (Lines{"mediaIsBusy"}));
}

TEST_F(DeviceRecordsTest, AnInvalidDriveIsSkippedBeforeItsDiscIsAskedFor) {
  device_.valid = false;
  EXPECT_TRUE(build({&device_}).empty());
  EXPECT_EQ(device_.questions, (Lines{"mediaIsBusy", "isValid"}));
}

TEST_F(DeviceRecordsTest, ADriveWithoutADiscIsSkipped) {
  device_.present = false;
  EXPECT_TRUE(build({&device_}).empty());
  EXPECT_EQ(device_.questions,
            (Lines{"mediaIsBusy", "isValid", "mediaIsPresent", "mediaIsTransitioning"}));
}

TEST_F(DeviceRecordsTest, ADriveThatCannotWriteCdsIsSkippedLast) {
  device_.burner = false;
  EXPECT_TRUE(build({&device_}).empty());
  EXPECT_EQ(device_.questions, (Lines{"mediaIsBusy", "isValid", "mediaIsPresent", "writesCD"}));
}

TEST_F(DeviceRecordsTest, ALoadingDiscHasOnlyItsDriveAndAnEmptyReason) {
  device_.present = false;
  device_.transitioning = true;
  device_.type = DRDeviceMediaTypeCDRW;
  const DeviceRecord record = buildOne();
  EXPECT_EQ(record.DRDevice, &device_);
  EXPECT_EQ(record.description, (DeviceDescription{"loadingdisk", "KELVANE BURNER", std::nullopt}));
  EXPECT_EQ(record.unsupportedString, "");
  EXPECT_FALSE(record.RW);
  EXPECT_FALSE(record.consideredBlank.has_value());
  EXPECT_FALSE(record.totalMB.has_value());
  EXPECT_FALSE(isUsable(record));
  EXPECT_EQ(services_.listings, 0);
}

TEST_F(DeviceRecordsTest, ACdRWithRoomIsUsable) {
  services_.addVisible("/Volumes/MY DISC", "/dev/disk2s0");
  const DeviceRecord record = buildOne();
  EXPECT_EQ(record.description, (DeviceDescription{"MY DISC", "KELVANE BURNER", "CDR"}));
  EXPECT_EQ(record.consideredBlank, false);
  EXPECT_FALSE(record.RW);
  EXPECT_EQ(record.totalMB, "680.0");
  EXPECT_TRUE(isUsable(record));
  EXPECT_EQ(services_.sleeps, 0);
}

TEST_F(DeviceRecordsTest, ABlankDiscIsUntitledAndItsVolumeIsNotAskedFor) {
  device_.blank = true;
  device_.type = DRDeviceMediaTypeCDRW;
  const DeviceRecord record = buildOne();
  EXPECT_EQ(record.description, (DeviceDescription{"untitled", "KELVANE BURNER", "CDRW"}));
  EXPECT_EQ(record.consideredBlank, true);
  EXPECT_TRUE(record.RW);
  EXPECT_EQ(record.totalMB, "680.0");
  EXPECT_TRUE(isUsable(record));
  EXPECT_EQ(services_.listings, 0);
  EXPECT_TRUE(services_.reads.empty());
}

TEST_F(DeviceRecordsTest, AnAppendableDvdRwCountsAsBlankThoughItHoldsFiles) {
  device_.type = DRDeviceMediaTypeDVDRW;
  device_.blank = false;
  device_.appendable = true;
  const DeviceRecord record = buildOne();
  EXPECT_EQ(record.consideredBlank, true);
  EXPECT_EQ(record.description.volumename, "untitled");
  EXPECT_EQ(record.totalMB, "4300.0");
  EXPECT_EQ(services_.listings, 0);
}

TEST_F(DeviceRecordsTest, ADvdRHasACapacityAndIsRefused) {
  device_.type = DRDeviceMediaTypeDVDR;
  services_.addVisible("/Volumes/DVD", "/dev/disk2");
  const DeviceRecord record = buildOne();
  EXPECT_EQ(record.totalMB, "4300.0");
  EXPECT_EQ(record.unsupportedString, "unsupporteddisktype");
  EXPECT_FALSE(record.RW);
}

TEST_F(DeviceRecordsTest, ABlankDiscOfARefusedTypeIsRefused) {
  device_.type = DRDeviceMediaTypeDVDPlusR;
  device_.blank = true;
  const DeviceRecord record = buildOne();
  EXPECT_EQ(record.unsupportedString, "unsupporteddisktype");
  EXPECT_FALSE(record.totalMB.has_value());
}

TEST_F(DeviceRecordsTest, ACdWith680MegabytesInUseIsFull) {
  services_.addVisible("/Volumes/FULL", "/dev/disk2s0", "cd9660", kFullCdBlocks);
  EXPECT_EQ(buildOne().unsupportedString, "diskfull");
  services_.table["/Volumes/FULL"].totalBlocks = kFullCdBlocks - 1;
  EXPECT_TRUE(isUsable(buildOne()));
}

TEST_F(DeviceRecordsTest, AForeignLayoutIsToldInsteadOfAFullDisc) {
  services_.addVisible("/Volumes/FULL", "/dev/disk2s0", "udf", kFullCdBlocks);
  EXPECT_EQ(buildOne().unsupportedString, "unsupporteddiskformat");
}

TEST_F(DeviceRecordsTest, AnUnknownMediumHasNoTypeAndNoCapacityAndIsNotRefusedForIt) {
  device_.type.reset();
  services_.addVisible("/Volumes/X", "/dev/disk2");
  const DeviceRecord record = buildOne();
  EXPECT_FALSE(record.description.mediatype.has_value());
  EXPECT_FALSE(record.totalMB.has_value());
  EXPECT_TRUE(isUsable(record));
}

TEST_F(DeviceRecordsTest, ADiscThatIsMountedWhileItIsWaitedForIsListed) {
  services_.onSleep = [this] {
    if (services_.sleeps == 3) services_.addVisible("/Volumes/LATE", "/dev/disk2s0");
  };
  EXPECT_EQ(buildOne().description.volumename, "LATE");
  EXPECT_EQ(services_.slept, milliseconds(300));
  EXPECT_TRUE(log_.lines().empty());
}

TEST_F(DeviceRecordsTest, TheIdentityIsThatOfTheDiscThatWasWaitedForNotOfOneThatCameMeanwhile) {
  device_.identity = "the disc";
  services_.onSleep = [this] {
    device_.identity = "another disc";
    services_.addVisible("/Volumes/LATE", "/dev/disk2s0");
  };
  EXPECT_EQ(buildOne().mediaIdentity, "the disc");
}

TEST_F(DeviceRecordsTest, ADiscThatIsNotMountedWithinTwentySecondsIsLeftOut) {
  EXPECT_TRUE(build({&device_}).empty());
  EXPECT_EQ(services_.sleeps, 200);
  EXPECT_EQ(services_.slept, milliseconds(20000));
  EXPECT_EQ(services_.listings, 202);
  EXPECT_EQ(log_.lines(), (Lines{"unable to get mountpath. ignoring disk."}));
}

TEST_F(DeviceRecordsTest, TheFinalRequestMayStillFindTheMount) {
  services_.onListing = [this] {
    if (services_.listings == 202) services_.addVisible("/Volumes/LAST", "/dev/disk2s0");
  };
  EXPECT_EQ(buildOne().description.volumename, "LAST");
  EXPECT_EQ(services_.sleeps, 200);
}

TEST_F(DeviceRecordsTest, ADiscLeftOutDoesNotKeepOthersFromTheList) {
  test::FakeDevice second("disk5");
  services_.addVisible("/Volumes/SECOND", "/dev/disk5");
  const std::vector<DeviceRecord> records = build({&device_, &second});
  ASSERT_EQ(records.size(), 1U);
  EXPECT_EQ(records[0].DRDevice, &second);
}

TEST_F(DeviceRecordsTest, AVolumeThatVanishesAfterItsNameWasReadCountsAsForeign) {
  services_.addVisible("/Volumes/SHY", "/dev/disk2s0");
  services_.onListing = [this] {
    if (services_.listings == 2) services_.visible.clear();
  };
  const DeviceRecord record = buildOne();
  EXPECT_EQ(record.description.volumename, "SHY");
  EXPECT_EQ(record.unsupportedString, "unsupporteddiskformat");
}

TEST_F(DeviceRecordsTest, RecordsStandInTheOrderOfTheDrives) {
  test::FakeDevice second("disk5");
  test::FakeDevice third("disk1");
  device_.blank = second.blank = third.blank = true;
  const std::vector<DeviceRecord> records = build({&second, &device_, &third});
  ASSERT_EQ(records.size(), 3U);
  EXPECT_EQ(records[0].DRDevice, &second);
  EXPECT_EQ(records[1].DRDevice, &device_);
  EXPECT_EQ(records[2].DRDevice, &third);
}

}  // namespace
}  // namespace kelvane
