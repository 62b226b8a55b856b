// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/volumes/device_hold.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>

#include "media/fake_volume_services.h"
#include "volumes/loop_device.h"
#include "volumes/temporary_prefix.h"

namespace kelvane::test {
namespace {

class DeviceHold : public testing::Test {
 protected:
  void SetUp() override {
    if (device_.path().empty()) GTEST_SKIP() << "no loop device may be used here";
  }

  std::string makeFile() {
    const std::string path = prefix_.path() + "/disc";
    std::ofstream(path) << std::string(2048 * 100, 'x');
    return path;
  }

  TemporaryPrefix prefix_;
  LoopDevice device_{makeFile()};
  FakeVolumeServices services_;
};

TEST_F(DeviceHold, ADeviceThatNobodyHoldsIsNotWaitedFor) {
  waitUntilNobodyHolds(device_.path(), services_);
  EXPECT_EQ(services_.sleeps, 0);
}

TEST_F(DeviceHold, ADeviceIsWaitedForUntilItsHolderLetsGo) {
  const int holder = open(device_.path().c_str(), O_RDONLY | O_EXCL | O_CLOEXEC);
  ASSERT_GE(holder, 0);
  services_.onSleep = [this, holder] {
    if (services_.sleeps == 3) close(holder);
  };
  waitUntilNobodyHolds(device_.path(), services_);
  EXPECT_EQ(services_.sleeps, 3);
}

TEST_F(DeviceHold, AHolderWhoDoesNotLetGoIsWaitedForThreeSeconds) {
  const int holder = open(device_.path().c_str(), O_RDONLY | O_EXCL | O_CLOEXEC);
  ASSERT_GE(holder, 0);
  waitUntilNobodyHolds(device_.path(), services_);
  EXPECT_EQ(services_.slept, std::chrono::seconds(3));
  close(holder);
}

TEST_F(DeviceHold, WhatIsNoDeviceIsHeldByNobody) {
  waitUntilNobodyHolds("/dev/kv0", services_);
  waitUntilNobodyHolds(prefix_.path() + "/disc", services_);
  EXPECT_EQ(services_.sleeps, 0);
}

}  // namespace
}  // namespace kelvane::test
