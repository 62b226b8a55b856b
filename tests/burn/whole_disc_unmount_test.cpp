// SPDX-License-Identifier: GPL-2.0-or-later
#include "burn/whole_disc_unmount.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "media/fake_volume_services.h"
#include "platform/foundation/paths.h"

namespace kelvane {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class WholeDiscUnmountTest : public ::testing::Test {
 protected:
  void addHidden(const std::string& mountedFrom) {
    const std::string point = paths::hiddenMountPoint();
    services.table[point] = {"cd9660", point, mountedFrom, 1000, 0, 2048};
  }

  test::FakeVolumeServices services;
};

TEST_F(WholeDiscUnmountTest, VisibleAndHiddenVolumesOfTheDiscAreUnmounted) {
  services.addVisible("/Volumes/DVD", "/dev/kv0");
  services.addVisible("/Volumes/SLICE", "/dev/kv0s0", "hfs");
  addHidden("/dev/kv0");
  requestWholeDiscUnmount("kv0", services);
  EXPECT_THAT(services.unmounted,
              ElementsAre("/Volumes/DVD", "/Volumes/SLICE", paths::hiddenMountPoint()));
}

TEST_F(WholeDiscUnmountTest, OtherDiscsAndFoldersAreLeftAlone) {
  services.addVisible("/Volumes/OTHER", "/dev/kv01");
  services.addVisible("/Volumes/folder", "/dev/sda1", "ext4");
  addHidden("/dev/kv1");
  requestWholeDiscUnmount("kv0", services);
  EXPECT_THAT(services.unmounted, IsEmpty());
}

TEST_F(WholeDiscUnmountTest, AVolumeInUseIsTriedOnce) {
  services.addVisible("/Volumes/DVD", "/dev/kv0");
  services.lastStatus = -47;
  requestWholeDiscUnmount("kv0", services);
  EXPECT_THAT(services.unmounted, ElementsAre("/Volumes/DVD"));
  EXPECT_EQ(services.sleeps, 0);
}

TEST_F(WholeDiscUnmountTest, NothingMountedIsNothingToDo) {
  requestWholeDiscUnmount("kv0", services);
  EXPECT_THAT(services.unmounted, IsEmpty());
}

}  // namespace
}  // namespace kelvane
