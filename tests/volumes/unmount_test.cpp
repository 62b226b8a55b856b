// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/volumes/unmount.h"

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "platform/volumes/mount_table.h"
#include "volumes/disc_fixture.h"

namespace kelvane {
namespace {

class UnmountTest : public test::DiscFixture {
 protected:
  void SetUp() override {
    DiscFixture::SetUp();
    if (IsSkipped()) return;
    makeDisc("kv0", "DISC");
    mountAt("kv0", mountPoint_);
  }

  const std::string mountPoint_ = prefix_.volumes() + "/DISC with blanks";
};

TEST_F(UnmountTest, AVolumeThatNobodyUsesIsGoneFromTheTableAfterwards) {
  ASSERT_TRUE(isMountPoint(mountPoint_));
  EXPECT_EQ(unmountAtPath(mountPoint_, UnmountManner::WhenFree), kUnmountDone);
  EXPECT_FALSE(isMountPoint(mountPoint_));
}

TEST_F(UnmountTest, AVolumeWithAnOpenFileIsBusyAndStays) {
  const std::ifstream file(mountPoint_ + "/hello");
  ASSERT_TRUE(file.is_open());
  EXPECT_EQ(unmountAtPath(mountPoint_, UnmountManner::WhenFree), -47);
  EXPECT_TRUE(isMountPoint(mountPoint_));
}

TEST_F(UnmountTest, ABusyVolumeCanBeDetachedAndWhatIsOpenOnItGoesOn) {
  std::ifstream file(mountPoint_ + "/hello");
  ASSERT_TRUE(file.is_open());
  EXPECT_EQ(unmountAtPath(mountPoint_, UnmountManner::Detach), kUnmountDone);
  EXPECT_FALSE(isMountPoint(mountPoint_));
  const std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  EXPECT_EQ(text, "hello from DISC\n");
}

TEST_F(UnmountTest, WhereNothingIsMountedTheStatusSaysSo) {
  std::filesystem::create_directory(prefix_.volumes() + "/PLAIN");
  EXPECT_EQ(unmountAtPath(prefix_.volumes() + "/PLAIN", UnmountManner::WhenFree), EINVAL);
}

TEST_F(UnmountTest, APathThatDoesNotExistIsAnErrorButNotBusy) {
  const int status = unmountAtPath(prefix_.volumes() + "/NOTHING", UnmountManner::WhenFree);
  EXPECT_NE(status, kUnmountDone);
  EXPECT_NE(status, kUnmountBusy);
}

}  // namespace
}  // namespace kelvane
