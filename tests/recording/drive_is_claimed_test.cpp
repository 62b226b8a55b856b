// SPDX-License-Identifier: GPL-2.0-or-later
// The program that udev asks whether a drive's button may open the tray. Loop devices stand for the
// drive: to the kernel both are block devices. Other tests begin with the first of them.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

#include "platform/recording/drive_claim.h"
#include "recording/temporary_folder.h"

namespace kelvane {
namespace {

constexpr char kNode[] = "/dev/loop7";
constexpr char kNodeWithVolume[] = "/dev/loop6";

bool run(const std::string& command) {
  return std::system(command.c_str()) == 0;
}

bool isClaimed(const std::string& node) {
  return run(KELVANE_LIBEXEC_DIR "/kelvanefs-drive-is-claimed " + node);
}

TEST(DriveIsClaimed, AsLongAsSomebodyHasItsExclusiveDescriptor) {
  auto claim = DriveClaim::take(kNode);
  if (!claim) GTEST_SKIP() << "no loop device that can be opened";
  EXPECT_TRUE(isClaimed(kNode));
  claim.reset();
  EXPECT_FALSE(isClaimed(kNode));
}

TEST(DriveIsClaimed, NotByTheKernelThatHasMountedIt) {
  const testing::TemporaryFolder folder;
  const std::string image = folder.file("image");
  if (!run("truncate -s 2M " + image + " && mkfs.ext2 -q " + image + " && mkdir " +
           folder.file("volume") + " && losetup " + kNodeWithVolume + " " + image)) {
    GTEST_SKIP() << "no loop device that can be used";
  }
  const bool isMounted = run(std::string("mount ") + kNodeWithVolume + " " + folder.file("volume"));
  if (isMounted) {
    EXPECT_EQ(DriveClaim::take(kNodeWithVolume), nullptr);
    EXPECT_FALSE(isClaimed(kNodeWithVolume));
    EXPECT_TRUE(run("umount " + folder.file("volume")));
  }
  EXPECT_TRUE(run(std::string("losetup -d ") + kNodeWithVolume));
  if (!isMounted) GTEST_SKIP() << "nothing can be mounted here";
}

TEST(DriveIsClaimed, NotWhereThereIsNoDrive) {
  EXPECT_FALSE(isClaimed("/dev/null"));
  EXPECT_FALSE(isClaimed("/dev/no-such-drive"));
  EXPECT_FALSE(isClaimed(""));
}

}  // namespace
}  // namespace kelvane
