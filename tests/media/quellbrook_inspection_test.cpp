// SPDX-License-Identifier: GPL-2.0-or-later
#include <gtest/gtest.h>

#include "media/fake_volume_services.h"
#include "media/quellbrook.h"
#include "volumes/fake_device.h"

namespace kelvane::quellbrook {
namespace {

class InspectionTest : public testing::Test {
 protected:
  test::FakeDevice device_{"disk2"};
  test::FakeVolumeServices services_;
};

TEST_F(InspectionTest, TheSessionStringHoldsTheStartsOfTheLastTwoTracks) {
  device_.setTracks({0, 11702});
  EXPECT_EQ(sessionString(device_), "0,11702");
  device_.setTracks({0, 11702, 25000});
  EXPECT_EQ(sessionString(device_), "11702,25000");
}

TEST_F(InspectionTest, ADiscWithOneTrackHasTheSessionStringZeroWhateverItsStart) {
  device_.setTracks({0});
  EXPECT_EQ(sessionString(device_), "0");
  device_.setTracks({std::nullopt});
  EXPECT_EQ(sessionString(device_), "0");
  device_.setTracks({150});
  EXPECT_EQ(sessionString(device_), "0");
}

TEST_F(InspectionTest, AMissingAddressEndsTheSessionStringEarly) {
  device_.setTracks({0, 11702, std::nullopt});
  EXPECT_EQ(sessionString(device_), "11702");
  device_.setTracks({0, std::nullopt, 25000});
  EXPECT_EQ(sessionString(device_), std::nullopt);
  device_.setTracks({0, 11702});
  device_.deviceStatus.DRDeviceMediaInfoKey->DRDeviceTrackInfoKey.erase(2);
  EXPECT_EQ(sessionString(device_), "0");
}

TEST_F(InspectionTest, AddressesAreTakenAsTheDeviceReportsThem) {
  device_.setTracks({-150, 4294967296});
  EXPECT_EQ(sessionString(device_), "-150,4294967296");
}

TEST_F(InspectionTest, TracksAreTakenInTheOrderOfTheirReferences) {
  device_.setTracks({0, 11702});
  device_.deviceStatus.DRDeviceMediaInfoKey->DRDeviceTrackRefsKey = {2, 1};
  EXPECT_EQ(sessionString(device_), "11702,0");
}

TEST_F(InspectionTest, WithoutTracksOrADiscThereIsNoSessionString) {
  EXPECT_EQ(sessionString(device_), std::nullopt);
  device_.setTracks({});
  EXPECT_EQ(sessionString(device_), std::nullopt);
}

TEST_F(InspectionTest, AVolumeMountedFromTheDevicesSliceWithTypeCd9660IsCompliant) {
  services_.addVisible("/Volumes/DISC", "/dev/disk2s1");
  EXPECT_TRUE(mediaKelvaneCompliant(device_, std::nullopt, services_));
}

TEST_F(InspectionTest, OnlyTheBeginningOfTheNodeIsCompared) {
  services_.addVisible("/Volumes/OTHER", "/dev/disk21");
  EXPECT_TRUE(mediaKelvaneCompliant(device_, std::nullopt, services_));
}

TEST_F(InspectionTest, AVolumeOfAnotherTypeDoesNotEndTheSearch) {
  services_.addVisible("/Volumes/HYBRID", "/dev/disk2s2", "hfs");
  EXPECT_FALSE(mediaKelvaneCompliant(device_, std::nullopt, services_));
  services_.addVisible("/Volumes/ISO", "/dev/disk2s1");
  EXPECT_TRUE(mediaKelvaneCompliant(device_, std::nullopt, services_));
}

TEST_F(InspectionTest, ADiscMountedAsUdfOnlyOrNotAtAllIsNotCompliant) {
  EXPECT_FALSE(mediaKelvaneCompliant(device_, std::nullopt, services_));
  services_.addVisible("/Volumes/FILM", "/dev/disk2", "udf");
  services_.addVisible("/Volumes/ISO", "/dev/disk3");
  EXPECT_FALSE(mediaKelvaneCompliant(device_, std::nullopt, services_));
}

TEST_F(InspectionTest, TheTypeMustBeExactlyCd9660) {
  services_.addVisible("/Volumes/X", "/dev/disk2", "cd9660x");
  services_.addVisible("/Volumes/Y", "/dev/disk2", "CD9660");
  EXPECT_FALSE(mediaKelvaneCompliant(device_, std::nullopt, services_));
}

TEST_F(InspectionTest, TheFallbackNameServesADeviceWithoutOneAndIsOtherwiseIgnored) {
  services_.addVisible("/Volumes/DISC", "/dev/disk5s0");
  EXPECT_FALSE(mediaKelvaneCompliant(device_, "disk5", services_));
  const test::FakeDevice nameless("");
  EXPECT_TRUE(mediaKelvaneCompliant(nameless, "disk5", services_));
  EXPECT_FALSE(mediaKelvaneCompliant(nameless, "disk6", services_));
}

TEST_F(InspectionTest, UsedMegabytesAreAllBlocksOfTheVolume) {
  services_.addVisible("/Volumes/DISC", "/dev/disk2", "cd9660", 300000);
  services_.table["/Volumes/DISC"].freeBlocks = 100000;
  EXPECT_EQ(fsMediaMBUsed(device_, "/Volumes/DISC", services_), 585.9375);
}

TEST_F(InspectionTest, UsedMegabytesAreNotCutToWholeOnesNorToAnIntegersRange) {
  services_.addVisible("/Volumes/DISC", "/dev/disk2", "cd9660", 1);
  EXPECT_EQ(fsMediaMBUsed(device_, "/Volumes/DISC", services_), 0.001953125);
  services_.table["/Volumes/DISC"].totalBlocks = int64_t{1} << 62;
  EXPECT_EQ(fsMediaMBUsed(device_, "/Volumes/DISC", services_), 9007199254740992.0);
}

TEST_F(InspectionTest, APathThatCannotBeExaminedUsesNothing) {
  EXPECT_EQ(fsMediaMBUsed(device_, "/Volumes/GONE", services_), 0.0);
}

}  // namespace
}  // namespace kelvane::quellbrook
