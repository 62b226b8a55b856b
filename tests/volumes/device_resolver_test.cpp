// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/volumes/device_resolver.h"

#include <gtest/gtest.h>

#include "volumes/temporary_prefix.h"

namespace kelvane {
namespace {

using Kind = ResolvedDevice::Kind;

const std::vector<EmulatedDrive> kDrives = {{"kv0", "/discs/a.kvdisc"},
                                            {"kv1", "/discs/b=c.kvdisc"}};

TEST(DeviceResolverTest, EachLineOfTheVariableIsADrive) {
  EXPECT_EQ(parseEmulatedDrives("kv0=/discs/a.kvdisc\nkv1=/discs/b=c.kvdisc\n"), kDrives);
  EXPECT_EQ(parseEmulatedDrives("kv0=/discs/a.kvdisc\nkv1=/discs/b=c.kvdisc"), kDrives);
}

TEST(DeviceResolverTest, LinesOfAnotherFormAreLeftOut) {
  EXPECT_TRUE(parseEmulatedDrives("").empty());
  EXPECT_TRUE(
      parseEmulatedDrives("\nkv0\nkv0=relative.kvdisc\nsr0=/x\nkv=/x\nkvx=/x\n=/x").empty());
}

TEST(DeviceResolverTest, EveryFormOfAnEmulatedDrivesNameIsItsFileOfSectors) {
  const ResolvedDevice expected{Kind::EmulatedDrive, "/discs/a.kvdisc/sectors", "/discs/a.kvdisc"};
  for (const char* name :
       {"kv0", "kv0s0", "kv0/2", "/dev/kv0", "/dev/kv0s0", "/dev/rkv0", "/dev/rkv0s0"}) {
    EXPECT_EQ(resolveDevice(name, kDrives), expected) << name;
  }
}

TEST(DeviceResolverTest, EveryFormOfARealDrivesNameIsItsDeviceNode) {
  const ResolvedDevice expected{Kind::LinuxDevice, "/dev/sr0", ""};
  for (const char* name : {"sr0", "sr0s0", "sr0/3", "/dev/sr0", "/dev/sr0s0", "/dev/rsr0"}) {
    EXPECT_EQ(resolveDevice(name, kDrives), expected) << name;
  }
  EXPECT_EQ(resolveDevice("/dev/sr12", {})->path, "/dev/sr12");
}

TEST(DeviceResolverTest, DrivesAreToldApartByTheWholeName) {
  EXPECT_EQ(resolveDevice("kv1", kDrives)->discFolder, "/discs/b=c.kvdisc");
  EXPECT_FALSE(resolveDevice("kv10", kDrives).has_value());
  EXPECT_FALSE(resolveDevice("kv2", kDrives).has_value());
}

TEST(DeviceResolverTest, NamesOfAnotherFormAreRefused) {
  for (const char* name : {"", "/dev/", "/dev/r", "kv", "sr", "sr0x", "kv0s1", "kv0/", "kv0/x",
                           "/dev/sda", "/etc/passwd", "sr0/../sda", "rkv0", "kv0=", "/dev/rrkv0"}) {
    EXPECT_FALSE(resolveDevice(name, kDrives).has_value()) << name;
  }
}

TEST(DeviceResolverTest, TheDrivesOfTheEnvironmentAreTakenWhereNoneAreGiven) {
  const test::ScopedVariable drives(kEmulatedDrivesVariable, "kv0=/elsewhere/d.kvdisc");
  EXPECT_EQ(resolveDevice("/dev/rkv0")->path, "/elsewhere/d.kvdisc/sectors");
}

}  // namespace
}  // namespace kelvane
