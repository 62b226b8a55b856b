// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/volumes/visible_mounts.h"

#include <filesystem>
#include <fstream>
#include <utility>

#include "platform/foundation/paths.h"
#include "platform/volumes/mount_table.h"
#include "platform/volumes/unmount.h"
#include "volumes/disc_fixture.h"
#include "volumes/fake_device.h"

namespace kelvane {
namespace {

class VisibleMountsTest : public test::DiscFixture {
 protected:
  void SetUp() override {
    DiscFixture::SetUp();
    if (IsSkipped()) return;
    insert(drive_, "kv0", "DISC");
  }

  void insert(test::FakeDevice& drive, const std::string& bsdName, const std::string& volumeName) {
    makeDisc(bsdName, volumeName);
    drive.disc = discFolder(bsdName);
    drive.setTracks({0, 11702});
    drive.present = true;
  }

  std::string visible(const std::string& name) const { return prefix_.volumes() + "/" + name; }

  bool isMountedFrom(const std::string& path, const std::string& source) const {
    const auto entry = mountTableEntry(path);
    return entry && entry->mountedOn == path && entry->mountedFrom == source;
  }

  bool volumesAreEmpty() const { return std::filesystem::is_empty(prefix_.volumes()); }

  test::FakeDevice drive_{"kv0"};
};

TEST_F(VisibleMountsTest, ADiscWithContentIsMountedUnderItsNameBeforeUpdateReturns) {
  VisibleMounts mounts;
  mounts.update(drive_);
  EXPECT_TRUE(isMountedFrom(visible("DISC"), "/dev/kv0s0"));
  EXPECT_TRUE(std::filesystem::exists(visible("DISC") + "/hello"));
}

TEST_F(VisibleMountsTest, ADvdIsMountedFromTheDriveItself) {
  drive_.type = DRDeviceMediaTypeDVDPlusRW;
  VisibleMounts mounts;
  mounts.update(drive_);
  EXPECT_TRUE(isMountedFrom(visible("DISC"), "/dev/kv0"));
}

TEST_F(VisibleMountsTest, MountAndFolderGoWithTheDisc) {
  VisibleMounts mounts;
  mounts.update(drive_);
  drive_.present = false;
  mounts.update(drive_);
  EXPECT_TRUE(volumesAreEmpty());
}

TEST_F(VisibleMountsTest, TheMountOfADiscThatLeavesWhileItIsReadGoesToo) {
  VisibleMounts mounts;
  mounts.update(drive_);
  const std::ifstream reader(visible("DISC") + "/hello");
  ASSERT_TRUE(reader.is_open());
  drive_.present = false;
  mounts.update(drive_);
  EXPECT_TRUE(volumesAreEmpty());
}

TEST_F(VisibleMountsTest, TheEndOfTheObjectUnmountsEverythingAlsoTheHiddenMount) {
  {
    VisibleMounts mounts;
    mounts.update(drive_);
    mountAt("kv0", paths::hiddenMountPoint());
  }
  EXPECT_TRUE(volumesAreEmpty());
  EXPECT_FALSE(isMountPoint(paths::hiddenMountPoint()));
}

TEST_F(VisibleMountsTest, ATakenNameGetsTheFirstFreeNumber) {
  std::filesystem::create_directory(visible("DISC"));
  VisibleMounts mounts;
  mounts.update(drive_);
  EXPECT_TRUE(isMountedFrom(visible("DISC 1"), "/dev/kv0s0"));
  test::FakeDevice second("kv1");
  insert(second, "kv1", "DISC");
  mounts.update(second);
  EXPECT_TRUE(isMountedFrom(visible("DISC 2"), "/dev/kv1s0"));
}

TEST_F(VisibleMountsTest, TheNameOfTheWritableVolumeIsAlwaysTaken) {
  insert(drive_, "kv0", "tarnwick");
  VisibleMounts mounts;
  mounts.update(drive_);
  EXPECT_TRUE(isMountedFrom(visible("tarnwick 1"), "/dev/kv0s0"));
}

TEST_F(VisibleMountsTest, AVolumeWithoutANameIsMountedAsCdrom) {
  insert(drive_, "kv0", "");
  VisibleMounts mounts;
  mounts.update(drive_);
  EXPECT_TRUE(isMountedFrom(visible("CDROM"), "/dev/kv0s0"));
}

TEST_F(VisibleMountsTest, ABlankOrForeignDiscGetsNoMount) {
  VisibleMounts mounts;
  drive_.blank = true;
  mounts.update(drive_);
  EXPECT_TRUE(volumesAreEmpty());
  drive_.blank = false;
  makeForeignDisc("kv0");
  mounts.update(drive_);
  EXPECT_TRUE(volumesAreEmpty());
}

// Of a real drive as far as the drive tells; its name still leads to the disc. No other test mounts
// from a drive of that name: a disc that others have mounted, wherever that is, is left to them.
class VisibleMountsWithoutADesktop : public VisibleMountsTest {
 protected:
  void SetUp() override {
    VisibleMountsTest::SetUp();
    if (IsSkipped()) return;
    insert(realDrive_, "kv2", "DISC");
    realDrive_.disc.reset();
  }

  test::FakeDevice realDrive_{"kv2"};
};

TEST_F(VisibleMountsWithoutADesktop, ADiscInARealDriveIsMountedAndWhoeverOpensItWaitsForThat) {
  VisibleMounts mounts;
  mounts.update(realDrive_);
  mounts.hold("kv2");
  EXPECT_TRUE(isMountedFrom(visible("DISC"), "/dev/kv2s0"));
}

TEST_F(VisibleMountsWithoutADesktop, ADiscInARealDriveIsMountedOnceHoweverOftenTheDriveTellsOfIt) {
  VisibleMounts mounts;
  for (int time = 0; time < 3; ++time) mounts.update(realDrive_);
  mounts.hold("kv2");
  mounts.release("kv2");
  mounts.update(realDrive_);
  mounts.hold("kv2");
  EXPECT_TRUE(isMountedFrom(visible("DISC"), "/dev/kv2s0"));
  EXPECT_FALSE(std::filesystem::exists(visible("DISC 1"))) << "mounted twice";
}

TEST_F(VisibleMountsWithoutADesktop, WhoeverUnmountsItDoesSoBehindTheMountThatHasBegun) {
  VisibleMounts mounts;
  mounts.update(realDrive_);
  mounts.unmountAllOf("kv2");
  EXPECT_TRUE(volumesAreEmpty());
  {
    VisibleMounts others;
    others.update(realDrive_);
  }
  EXPECT_TRUE(volumesAreEmpty());
}

TEST_F(VisibleMountsTest, ADriveThatIsBusyOrLoadingIsLeftAlone) {
  VisibleMounts mounts;
  drive_.busy = true;
  mounts.update(drive_);
  drive_.busy = false;
  drive_.transitioning = true;
  mounts.update(drive_);
  EXPECT_TRUE(volumesAreEmpty());
}

TEST_F(VisibleMountsTest, AFurtherNotificationKeepsTheMountAsItIs) {
  VisibleMounts mounts;
  mounts.update(drive_);
  const std::ifstream reader(visible("DISC") + "/hello");
  mounts.update(drive_);
  EXPECT_TRUE(isMountedFrom(visible("DISC"), "/dev/kv0s0"));
  EXPECT_FALSE(std::filesystem::exists(visible("DISC 1")));
}

TEST_F(VisibleMountsTest, AHeldDiscIsNotMountedAgainUntilItIsReleased) {
  VisibleMounts mounts;
  mounts.update(drive_);
  mounts.hold("kv0");
  EXPECT_TRUE(isMountedFrom(visible("DISC"), "/dev/kv0s0"));
  ASSERT_EQ(unmountAtPath(visible("DISC"), UnmountManner::WhenFree), kUnmountDone);
  std::filesystem::remove(visible("DISC"));
  mounts.update(drive_);
  EXPECT_TRUE(volumesAreEmpty());
  mounts.release("kv0");
  mounts.update(drive_);
  EXPECT_TRUE(isMountedFrom(visible("DISC"), "/dev/kv0s0"));
}

TEST_F(VisibleMountsTest, AHeldDiscThatLeavesTakesItsHiddenMountAlong) {
  VisibleMounts mounts;
  mounts.hold("kv0");
  mountAt("kv0", paths::hiddenMountPoint());
  drive_.present = false;
  mounts.update(drive_);
  EXPECT_FALSE(isMountPoint(paths::hiddenMountPoint()));
}

TEST_F(VisibleMountsTest, ADriveThatDoesNotSayWhatIsOnTheDiscKeepsItsMountsUntilItDoes) {
  VisibleMounts mounts;
  mounts.update(drive_);
  const DRDeviceStatus status = std::exchange(drive_.deviceStatus, {});
  mounts.update(drive_);
  EXPECT_TRUE(isMountedFrom(visible("DISC"), "/dev/kv0s0"));
  mounts.hold("kv0");
  mountAt("kv0", paths::hiddenMountPoint());
  mounts.update(drive_);
  EXPECT_TRUE(isMountPoint(paths::hiddenMountPoint()));
  drive_.deviceStatus = status;
  drive_.deviceStatus.DRDeviceMediaInfoKey->DRDeviceTrackInfoKey.clear();
  mounts.update(drive_);
  EXPECT_TRUE(volumesAreEmpty());
}

TEST_F(VisibleMountsTest, ASessionThatWasAddedMeanwhileIsTheOneMountedNext) {
  VisibleMounts mounts;
  mounts.update(drive_);
  appendSession("kv0", "SECOND", 1000);
  drive_.setTracks({0, 1000, 20000});
  mounts.update(drive_);
  EXPECT_TRUE(isMountedFrom(visible("SECOND"), "/dev/kv0s0"));
  EXPECT_FALSE(std::filesystem::exists(visible("DISC")));
}

TEST_F(VisibleMountsTest, UnmountingADriveLeavesThoseOfOtherNamesAlone) {
  VisibleMounts mounts;
  mounts.update(drive_);
  test::FakeDevice second("kv1");
  insert(second, "kv1", "OTHER");
  mounts.update(second);
  mounts.unmountAllOf("kv0");
  EXPECT_FALSE(std::filesystem::exists(visible("DISC")));
  EXPECT_TRUE(isMountedFrom(visible("OTHER"), "/dev/kv1s0"));
}

}  // namespace
}  // namespace kelvane
