// SPDX-License-Identifier: GPL-2.0-or-later
#include <gtest/gtest.h>

#include <cerrno>

#include "media/fake_volume_services.h"
#include "media/quellbrook.h"
#include "media/recorded_log.h"
#include "platform/volumes/unmount.h"
#include "volumes/fake_device.h"
#include "volumes/temporary_prefix.h"

namespace kelvane::quellbrook {
namespace {

using Lines = std::vector<std::string>;
using std::chrono::milliseconds;

class VolumeControlTest : public testing::Test {
 protected:
  VolumeControlTest() { device_.setTracks({0, 11702, 25000}); }

  std::optional<std::string> mountPath(const std::optional<std::string>& fallback = std::nullopt) {
    return mountPathForFallbackBsdName(device_, fallback, services_);
  }

  // The hidden mount appears with the read of this number.
  void mountHiddenAtRead(int number, const std::string& type = "cd9660") {
    services_.onRead = [this, number, type](const std::string& path) {
      if (path == hidden_ && services_.reads[path] == number) {
        services_.table[path] = {type, path, "/dev/disk2s0", 1000, 0, 2048};
      }
    };
  }

  test::TemporaryPrefix prefix_;
  const std::string hidden_ = prefix_.path() + "/tmp/kelvanefsmount/.mnt";
  test::FakeDevice device_{"disk2"};
  test::FakeVolumeServices services_;
  test::RecordedLog log_;
};

TEST_F(VolumeControlTest, TheMountPathIsThatOfTheVolumeFromTheDeviceOrItsSlice) {
  services_.addVisible("/Volumes/OTHER", "/dev/disk3");
  services_.addVisible("/Volumes/DISC", "/dev/disk2s1");
  EXPECT_EQ(mountPath(), "/Volumes/DISC");
}

TEST_F(VolumeControlTest, AnyTypeOfVolumeHasAMountPath) {
  services_.addVisible("/Volumes/FILM", "/dev/disk2", "udf");
  EXPECT_EQ(mountPath(), "/Volumes/FILM");
}

TEST_F(VolumeControlTest, TheFirstInListingOrderWinsAlsoFromADriveWhoseNameIsLonger) {
  services_.addVisible("/Volumes/B", "/dev/disk21");
  services_.addVisible("/Volumes/A", "/dev/disk2");
  EXPECT_EQ(mountPath(), "/Volumes/B");
  services_.visible = {"/Volumes/A", "/Volumes/B"};
  EXPECT_EQ(mountPath(), "/Volumes/A");
}

TEST_F(VolumeControlTest, TheMountedOnPathIsGivenNotTheEntrysOwn) {
  services_.visible = {"/Volumes/link"};
  services_.table["/Volumes/link"] = {"cd9660", "/media/DISC", "/dev/disk2", 1, 0, 2048};
  EXPECT_EQ(mountPath(), "/media/DISC");
}

TEST_F(VolumeControlTest, EntriesThatCannotBeExaminedOrLieOnOtherFileSystemsArePassedOver) {
  services_.visible = {"/Volumes/DEAD", "/Volumes/FOLDER"};
  services_.table["/Volumes/FOLDER"] = {"ext4", "/", "/dev/sda1", 1, 0, 4096};
  EXPECT_EQ(mountPath(), std::nullopt);
  services_.addVisible("/Volumes/DISC", "/dev/disk2");
  EXPECT_EQ(mountPath(), "/Volumes/DISC");
}

TEST_F(VolumeControlTest, TheNodeMustStandAtTheBeginning) {
  services_.addVisible("/Volumes/X", "/some/dev/disk2");
  EXPECT_EQ(mountPath(), std::nullopt);
}

TEST_F(VolumeControlTest, ADeviceWithoutANameIsLookedForByItsFallback) {
  services_.addVisible("/Volumes/DISC", "/dev/disk9s0");
  EXPECT_EQ(mountPath("disk9"), std::nullopt);
  const test::FakeDevice nameless("");
  EXPECT_EQ(mountPathForFallbackBsdName(nameless, "disk9", services_), "/Volumes/DISC");
}

TEST_F(VolumeControlTest, ADiscThatIsNotMountedVisiblyIsNotRemounted) {
  EXPECT_EQ(remounthidden(device_, services_), std::nullopt);
  EXPECT_EQ(log_.lines(), (Lines{"Remounting aborted: No mountpath for myself."}));
  EXPECT_TRUE(services_.unmounted.empty());
  EXPECT_TRUE(services_.requests.empty());
}

TEST_F(VolumeControlTest, AVolumeThatCannotBeLookedUpEndsRemountingWithoutALine) {
  services_.addVisible("/Volumes/DISC", "/dev/disk2");
  services_.lookupFails = true;
  EXPECT_EQ(remounthidden(device_, services_), std::nullopt);
  EXPECT_TRUE(log_.lines().empty());
  EXPECT_TRUE(services_.unmounted.empty());
}

TEST_F(VolumeControlTest, ACdIsRemountedFromItsFirstSliceWithItsLastSession) {
  services_.addVisible("/Volumes/DISC", "/dev/disk2s0");
  mountHiddenAtRead(1);
  EXPECT_EQ(remounthidden(device_, services_), hidden_);
  EXPECT_EQ(services_.unmounted, (Lines{"/Volumes/DISC"}));
  EXPECT_EQ(services_.created, (Lines{hidden_}));
  ASSERT_EQ(services_.requests.size(), 1U);
  EXPECT_EQ(services_.requests[0].bsdName, "disk2s0");
  EXPECT_EQ(services_.requests[0].sessionStart, 11702);
  EXPECT_EQ(services_.requests[0].mountPoint, hidden_);
  EXPECT_EQ(log_.lines(), (Lines{"unmount attempt 0"}));
}

TEST_F(VolumeControlTest, OthersAreKeptFromMountingTheDiscAsSoonAsItIsUnmounted) {
  services_.addVisible("/Volumes/DISC", "/dev/disk2s0");
  services_.statuses = {kUnmountBusy, kUnmountDone};
  mountHiddenAtRead(1);
  EXPECT_EQ(remounthidden(device_, services_), hidden_);
  ASSERT_EQ(services_.keptFromOthers.size(), 1U);
  EXPECT_EQ(services_.keptFromOthers[0].first, &device_);
  EXPECT_EQ(services_.keptFromOthers[0].second, 2U);
}

TEST_F(VolumeControlTest, ADiscThatStaysMountedIsKeptFromNobody) {
  services_.addVisible("/Volumes/DISC", "/dev/disk2s0");
  services_.lastStatus = kUnmountBusy;
  EXPECT_EQ(remounthidden(device_, services_), std::nullopt);
  EXPECT_TRUE(services_.keptFromOthers.empty());
}

TEST_F(VolumeControlTest, EveryMediumButCdRAndCdRwIsRemountedFromTheDeviceItself) {
  const std::vector<std::pair<std::optional<std::string>, std::string>> cases = {
      {DRDeviceMediaTypeCDR, "disk2s0"},     {DRDeviceMediaTypeCDRW, "disk2s0"},
      {DRDeviceMediaTypeDVDPlusRW, "disk2"}, {DRDeviceMediaTypeDVDRW, "disk2"},
      {DRDeviceMediaTypeCDROM, "disk2"},     {std::nullopt, "disk2"}};
  for (const auto& [type, bsdName] : cases) {
    test::FakeVolumeServices services;
    services.addVisible("/Volumes/DISC", "/dev/disk2");
    services.table[hidden_] = {"cd9660", hidden_, "/dev/disk2", 1, 0, 2048};
    device_.type = type;
    EXPECT_EQ(remounthidden(device_, services), hidden_);
    EXPECT_EQ(services.requests.at(0).bsdName, bsdName);
  }
}

TEST_F(VolumeControlTest, ABusyVolumeIsTriedAgainAndEachAttemptLogsItsStatusAfterAPause) {
  services_.addVisible("/Volumes/DISC", "/dev/disk2");
  services_.statuses = {-47, -47};
  services_.table[hidden_] = {"cd9660", hidden_, "/dev/disk2s0", 1, 0, 2048};
  std::vector<size_t> linesAtSleep;
  services_.onSleep = [&] { linesAtSleep.push_back(log_.lines().size()); };
  EXPECT_EQ(remounthidden(device_, services_), hidden_);
  EXPECT_EQ(log_.lines(),
            (Lines{"unmount attempt -47", "unmount attempt -47", "unmount attempt 0"}));
  // Each attempt sleeps before its line is written; the fourth sleep is that of the polling.
  EXPECT_EQ(linesAtSleep, (std::vector<size_t>{0, 1, 2, 3}));
}

TEST_F(VolumeControlTest, AVolumeThatStaysBusyIsGivenUpAfterFiftyAttempts) {
  services_.addVisible("/Volumes/DISC", "/dev/disk2");
  services_.lastStatus = -47;
  EXPECT_EQ(remounthidden(device_, services_), std::nullopt);
  EXPECT_EQ(services_.unmounted.size(), 50U);
  EXPECT_EQ(services_.slept, milliseconds(5000));
  Lines expected(50, "unmount attempt -47");
  expected.push_back("Remounting aborted: Unmount failed: -47 ");
  EXPECT_EQ(log_.lines(), expected);
  EXPECT_TRUE(services_.created.empty());
  EXPECT_TRUE(services_.requests.empty());
}

TEST_F(VolumeControlTest, AnyOtherStatusEndsTheAttemptsAtOnce) {
  services_.addVisible("/Volumes/DISC", "/dev/disk2");
  services_.statuses = {-47, EPERM};
  EXPECT_EQ(remounthidden(device_, services_), std::nullopt);
  EXPECT_EQ(log_.lines(), (Lines{"unmount attempt -47", "unmount attempt 1",
                                 "Remounting aborted: Unmount failed: 1 "}));
}

TEST_F(VolumeControlTest, SuccessOnTheFiftiethAttemptCounts) {
  services_.addVisible("/Volumes/DISC", "/dev/disk2");
  services_.statuses.assign(49, -47);
  services_.table[hidden_] = {"cd9660", hidden_, "/dev/disk2s0", 1, 0, 2048};
  EXPECT_EQ(remounthidden(device_, services_), hidden_);
  EXPECT_EQ(services_.unmounted.size(), 50U);
}

TEST_F(VolumeControlTest, AMountThatIsThereAtTheFirstReadTakesOnePause) {
  services_.addVisible("/Volumes/DISC", "/dev/disk2");
  mountHiddenAtRead(1);
  EXPECT_EQ(remounthidden(device_, services_), hidden_);
  EXPECT_EQ(services_.reads[hidden_], 1);
  EXPECT_EQ(services_.slept, milliseconds(100 + 100));
}

TEST_F(VolumeControlTest, AMountSeenByThe150thReadIsInTime) {
  services_.addVisible("/Volumes/DISC", "/dev/disk2");
  mountHiddenAtRead(150);
  EXPECT_EQ(remounthidden(device_, services_), hidden_);
  EXPECT_EQ(services_.reads[hidden_], 150);
}

TEST_F(VolumeControlTest, WhatThe151stReadSeesIsNeverLookedAt) {
  services_.addVisible("/Volumes/DISC", "/dev/disk2");
  mountHiddenAtRead(151);
  EXPECT_EQ(remounthidden(device_, services_), std::nullopt);
  EXPECT_EQ(services_.reads[hidden_], 151);
  EXPECT_EQ(log_.lines(), (Lines{"unmount attempt 0", "giving up on mounting bsd device disk2s0"}));
}

TEST_F(VolumeControlTest, ADiscWhoseLastSessionTheDriveDoesNotTellIsNotMounted) {
  services_.addVisible("/Volumes/DISC", "/dev/disk2");
  device_.deviceStatus = {};
  EXPECT_EQ(remounthidden(device_, services_), std::nullopt);
  EXPECT_TRUE(services_.requests.empty()) << "the first session would be taken for the last";
  EXPECT_EQ(log_.lines(), (Lines{"unmount attempt 0", "giving up on mounting bsd device disk2s0"}));
}

TEST_F(VolumeControlTest, ADiscThatDoesNotComeIsGivenUpAfterFifteenSeconds) {
  services_.addVisible("/Volumes/DISC", "/dev/disk2");
  EXPECT_EQ(remounthidden(device_, services_), std::nullopt);
  EXPECT_EQ(services_.slept, milliseconds(100 + 15000));
  EXPECT_EQ(log_.lines().back(), "giving up on mounting bsd device disk2s0");
}

TEST_F(VolumeControlTest, ADvdThatComesAsUdfIsGivenUp) {
  device_.type = DRDeviceMediaTypeDVDPlusRW;
  services_.addVisible("/Volumes/FILM", "/dev/disk2", "udf");
  mountHiddenAtRead(1, "udf");
  EXPECT_EQ(remounthidden(device_, services_), std::nullopt);
  EXPECT_EQ(services_.reads[hidden_], 151);
  EXPECT_EQ(log_.lines().back(), "giving up on mounting bsd device disk2");
}

TEST_F(VolumeControlTest, UnmountReleasesTheHiddenMountOnceAndIgnoresFailure) {
  services_.table[hidden_] = {"cd9660", hidden_, "/dev/disk2s0", 1, 0, 2048};
  services_.lastStatus = -47;
  unmount(device_, services_);
  EXPECT_EQ(services_.unmounted, (Lines{hidden_}));
  EXPECT_EQ(services_.sleeps, 0);
  EXPECT_TRUE(log_.lines().empty());
}

TEST_F(VolumeControlTest, UnmountOfABlankDiscDoesNothing) {
  services_.table[hidden_] = {"cd9660", hidden_, "/dev/disk2s0", 1, 0, 2048};
  device_.setTracks({0});
  unmount(device_, services_);
  EXPECT_TRUE(services_.unmounted.empty());
}

TEST_F(VolumeControlTest, UnmountWithoutAHiddenMountDoesNothing) {
  unmount(device_, services_);
  EXPECT_TRUE(services_.unmounted.empty());
  EXPECT_TRUE(log_.lines().empty());
}

}  // namespace
}  // namespace kelvane::quellbrook
