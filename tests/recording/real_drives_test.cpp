// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/recording/real_drives.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <linux/loop.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <filesystem>

#include "foundation/temporary_folder.h"
#include "platform/recording/dr_device.h"
#include "platform/recording/drive.h"
#include "platform/recording/file_lock.h"
#include "platform/recording/mmc/sg_io_transport.h"

namespace kelvane {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

// A folder that looks like sysfs with these block devices.
class RealDrivesTest : public ::testing::Test {
 protected:
  void addBlockDevice(const std::string& name) {
    const std::filesystem::path device = folder.file("devices/pci0/ata1/block/" + name);
    std::filesystem::create_directories(device);
    std::filesystem::create_directories(folder.file("class"));
    std::filesystem::create_directory_symlink(device, folder.file("class/" + name));
  }

  // Empty where there is none.
  static std::string freeLoopDevice() {
    const int control = open("/dev/loop-control", O_RDWR | O_CLOEXEC);
    if (control < 0) return {};
    const int number = ioctl(control, LOOP_CTL_GET_FREE);
    close(control);
    return number < 0 ? std::string() : "/dev/loop" + std::to_string(number);
  }

  testing::TemporaryFolder folder;
};

TEST_F(RealDrivesTest, AreTheOpticalOnesAmongTheBlockDevicesInTheOrderOfTheirNumbers) {
  for (const char* name : {"sda", "sr10", "sr2", "loop0", "sr0", "sr", "srx", "sr1p1"}) {
    addBlockDevice(name);
  }
  EXPECT_THAT(realDriveNames(folder.file("class")), ElementsAre("sr0", "sr2", "sr10"));
}

TEST_F(RealDrivesTest, AreNoneWhereThereIsNoSuchFolder) {
  EXPECT_THAT(realDriveNames(folder.file("nothing")), IsEmpty());
}

TEST_F(RealDrivesTest, BearTheirSysfsPathWhoseLastComponentIsTheirName) {
  addBlockDevice("sr987");
  const DRDevice device(openRealDrive("sr987", folder.file("class")));
  EXPECT_EQ(device.bsdName(), "sr987");
  EXPECT_EQ(device.ioRegistryEntryPath(), folder.file("devices/pci0/ata1/block/sr987"));
  EXPECT_EQ(device.drive()->identity().programPath, "/dev/sr987");
  EXPECT_FALSE(device.emulatedDisc());
}

TEST_F(RealDrivesTest, OneThatDoesNotAnswerHasNoDiscAndNoAbilities) {
  addBlockDevice("sr987");
  DRDevice device(openRealDrive("sr987", folder.file("class")));
  EXPECT_TRUE(device.isValid());
  EXPECT_FALSE(device.mediaIsPresent());
  EXPECT_FALSE(device.mediaIsTransitioning());
  EXPECT_FALSE(device.mediaIsBusy());
  EXPECT_FALSE(device.writesCD());
  EXPECT_FALSE(device.mediaType());
  EXPECT_FALSE(device.status().DRDeviceMediaInfoKey);
  EXPECT_EQ(device.displayName(), "sr987");
  EXPECT_FALSE(device.ejectMedia());
  EXPECT_FALSE(device.acquireExclusiveAccess());
}

TEST_F(RealDrivesTest, OneThatAnybodyRecordsOnIsBusy) {
  addBlockDevice("sr987");
  const DRDevice device(openRealDrive("sr987", folder.file("class")));
  auto recorder =
      FileLock::acquire(device.drive()->identity().recordingLockPath, std::chrono::seconds(60));
  ASSERT_TRUE(recorder);
  EXPECT_TRUE(device.mediaIsBusy());
  recorder.reset();
  EXPECT_FALSE(device.mediaIsBusy());
}

// A loop device stands for the drive: the kernel gives an exclusive descriptor of it once only.
TEST_F(RealDrivesTest, OneThatAnotherProgramHasForItselfCannotBeHad) {
  // Tests that claim or mount one at the same time begin with the first of them, too.
  const auto turn = FileLock::acquire("/dev/loop0", std::chrono::minutes(1));
  const std::string device = freeLoopDevice();
  if (access(device.c_str(), R_OK) != 0) GTEST_SKIP() << "no loop device may be used here";
  mmc::SgIoTransport transport(device);
  EXPECT_FALSE(transport.refusesExclusiveAccess());
  const int burner = open(device.c_str(), O_RDONLY | O_EXCL | O_CLOEXEC);
  ASSERT_GE(burner, 0);
  EXPECT_TRUE(transport.refusesExclusiveAccess());
  close(burner);
  EXPECT_FALSE(transport.refusesExclusiveAccess());
}

TEST_F(RealDrivesTest, OneThatWasUnpluggedIsNoLongerValid) {
  addBlockDevice("sr987");
  const DRDevice device(openRealDrive("sr987", folder.file("class")));
  std::filesystem::remove(folder.file("class/sr987"));
  EXPECT_FALSE(device.isValid());
}

}  // namespace
}  // namespace kelvane
