// SPDX-License-Identifier: GPL-2.0-or-later
#include "app/volume_stays_alert.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "foundation/temporary_folder.h"

namespace kelvane::test {
namespace {

TEST(VolumeStaysAlert, TellsWhoUsesTheVolume) {
  const testing::TemporaryFolder folder;
  const std::string volume = folder.file("volume");
  std::filesystem::create_directory(volume);
  const std::ofstream used(volume + "/used");
  const Alert alert = volumeStaysAlert(UnmountResult::Busy, volume);
  EXPECT_EQ(alert.messageKey, "VolumeBusy");
  EXPECT_NE(alert.detail.find(volume + "/used"), std::string::npos) << alert.detail;
  EXPECT_TRUE(isVolumeStaysAlert(alert));
}

TEST(VolumeStaysAlert, WhereTheSystemRefusesNobodyIsBlamed) {
  const testing::TemporaryFolder folder;
  const std::string volume = folder.file("volume");
  std::filesystem::create_directory(volume);
  const std::ofstream used(volume + "/used");
  const Alert alert = volumeStaysAlert(UnmountResult::Failed, volume);
  EXPECT_EQ(alert.messageKey, "VolumeNotUnmounted");
  EXPECT_EQ(alert.informativeKey, "VolumeNotUnmountedLong");
  EXPECT_EQ(alert.detail, "");
  EXPECT_TRUE(isVolumeStaysAlert(alert));
}

TEST(VolumeStaysAlert, OtherAlertsAreNone) {
  Alert alert;
  alert.messageKey = "EraseVolumeBusy";
  EXPECT_FALSE(isVolumeStaysAlert(alert));
}

}  // namespace
}  // namespace kelvane::test
