// SPDX-License-Identifier: GPL-2.0-or-later
// The program that udev asks whether a drive's button may open the tray. Loop devices stand for the
// drive: to the kernel both are block devices. Other tests begin with the first of them.
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <optional>
#include <string>

#include "foundation/temporary_folder.h"
#include "platform/recording/drive_claim.h"
#include "platform/recording/file_lock.h"

namespace kelvane {
namespace {

constexpr char kNode[] = "/dev/loop7";
constexpr char kFirstNode[] = "/dev/loop0";
constexpr int kClaimed = 0;
constexpr int kNotClaimed = 1;

/// The exit status of a shell's command; -1 where it has none.
int statusOf(const std::string& command) {
  const int status = std::system(command.c_str());
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

int answerFor(const std::string& node) {
  return statusOf(KELVANE_LIBEXEC_DIR "/kelvanefs-drive-is-claimed " + node);
}

/// A file system on a loop device of its own; both go with the object. Not mounted where this
/// machine has no such devices, or where the user may not.
class MountedLoopDevice {
 public:
  MountedLoopDevice() {
    const std::string image = folder_.file("image");
    const std::string made = folder_.file("node");
    if (statusOf("truncate -s 2M " + image + " && mkfs.ext2 -q " + image + " && mkdir " + volume_ +
                 " && losetup --find --show " + image + " > " + made) != 0) {
      return;
    }
    std::getline(std::ifstream(made), node_);
    isMounted_ = mount(node_.c_str(), volume_.c_str(), "ext2", MS_RDONLY, nullptr) == 0;
  }
  ~MountedLoopDevice() {
    if (isMounted_) umount(volume_.c_str());
    if (!node_.empty()) statusOf("losetup --detach " + node_);
  }
  MountedLoopDevice(const MountedLoopDevice&) = delete;
  MountedLoopDevice& operator=(const MountedLoopDevice&) = delete;

  bool isMounted() const { return isMounted_; }
  const std::string& node() const { return node_; }

 private:
  const testing::TemporaryFolder folder_;
  const std::string volume_ = folder_.file("volume");
  std::string node_;
  bool isMounted_ = false;
};

TEST(DriveIsClaimed, AsLongAsSomebodyHasItsExclusiveDescriptor) {
  // Tests of several builds at the same time wait for each other.
  const std::optional<FileLock> turn = FileLock::acquire(kNode, std::chrono::minutes(1));
  auto claim = DriveClaim::take(kNode);
  if (!claim) GTEST_SKIP() << "no loop device that can be opened";
  EXPECT_EQ(answerFor(kNode), kClaimed);
  claim.reset();
  EXPECT_EQ(answerFor(kNode), kNotClaimed);
}

TEST(DriveIsClaimed, NotByTheKernelThatHasMountedIt) {
  // The free device that is mounted is mostly the one that others claim.
  const std::optional<FileLock> turn = FileLock::acquire(kFirstNode, std::chrono::minutes(1));
  const MountedLoopDevice device;
  if (!device.isMounted()) GTEST_SKIP() << "nothing can be mounted here";
  EXPECT_EQ(DriveClaim::take(device.node()), nullptr);
  EXPECT_EQ(answerFor(device.node()), kNotClaimed);
}

TEST(DriveIsClaimed, NotWhereThereIsNoDrive) {
  EXPECT_EQ(answerFor("/dev/null"), kNotClaimed);
  EXPECT_EQ(answerFor("/dev/no-such-drive"), kNotClaimed);
  EXPECT_EQ(answerFor("''"), kNotClaimed);
}

}  // namespace
}  // namespace kelvane
