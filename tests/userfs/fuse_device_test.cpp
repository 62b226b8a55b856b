// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/userfs/fuse_device.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace kelvane::userfs {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

class FuseDevice : public testing::Test {
 protected:
  FuseDevice() {
    std::string pattern = (std::filesystem::temp_directory_path() / "kvfuse-XXXXXX").string();
    folder_ = mkdtemp(pattern.data());
    device_ = folder_ + "/fuse";
  }
  ~FuseDevice() override { std::filesystem::remove_all(folder_); }

  std::string folder_;
  std::string device_;
};

TEST_F(FuseDevice, ThatIsMissingIsMissedWithWhatHelps) {
  EXPECT_EQ(whyFuseDeviceIsUnusable(device_),
            "The device " + device_ +
                " cannot be opened: No such file or directory. The kernel's module for it is not "
                "loaded. As root, run: modprobe fuse.");
}

TEST_F(FuseDevice, ThatIsAPlainFileIsNone) {
  std::ofstream(device_).close();
  EXPECT_EQ(whyFuseDeviceIsUnusable(device_),
            device_ + " is no device: this system has no user-space file systems.");
}

TEST_F(FuseDevice, ThatIsClosedToTheUserNamesTheRuleThatOpensIt) {
  if (geteuid() == 0) GTEST_SKIP() << "nothing is closed to root";
  std::ofstream(device_).close();
  chmod(device_.c_str(), 0);
  const std::string reason = whyFuseDeviceIsUnusable(device_);
  EXPECT_THAT(reason,
              StartsWith("The device " + device_ + " cannot be opened: Permission denied."));
  EXPECT_THAT(reason, HasSubstr(R"(KERNEL=="fuse", MODE="0666")"));
}

TEST_F(FuseDevice, ThatCanBeOpenedIsUsable) {
  // Any device that everybody may open serves.
  EXPECT_EQ(whyFuseDeviceIsUnusable("/dev/null"), "");
}

}  // namespace
}  // namespace kelvane::userfs
