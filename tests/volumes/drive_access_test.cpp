// SPDX-License-Identifier: GPL-2.0-or-later
#include "helpers/launchers/drive_access.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

namespace kelvane::launchers {
namespace {

const std::vector<EmulatedDrive> kDrives = {{"kv0", "/discs/a.kvdisc"}};

std::string valueOf(const DriveAccess& access, const std::string& name) {
  const auto found = std::find_if(access.environment.begin(), access.environment.end(),
                                  [&](const auto& variable) { return variable.name == name; });
  return found == access.environment.end() ? "" : found->value;
}

TEST(DriveAccessTest, AnEmulatedDriveIsShownAsADriveOfThisMachine) {
  std::string problem;
  for (const char* name : {"/dev/rkv0", "/dev/kv0", "kv0"}) {
    const auto access = accessToDrive(name, kDrives, KELVANE_LIBEXEC_DIR, &problem);
    ASSERT_TRUE(access) << problem;
    EXPECT_EQ(access->path, "/dev/sr0");
    EXPECT_EQ(valueOf(*access, "KELVANE_SHIM_DISC"), "/discs/a.kvdisc");
    EXPECT_EQ(valueOf(*access, "KELVANE_SHIM_DEVICE"), "/dev/sr0");
    EXPECT_TRUE(valueOf(*access, "LD_PRELOAD").starts_with(KELVANE_LIBEXEC_DIR));
    EXPECT_EQ(access->recordingLockPath, "/discs/a.kvdisc/sectors");
  }
}

TEST(DriveAccessTest, ADriveOfThisMachineIsGivenByItsNodeAndNeedsNoMoreThanItsLock) {
  std::string problem;
  const auto access = accessToDrive("/dev/rsr1", kDrives, KELVANE_LIBEXEC_DIR, &problem);
  ASSERT_TRUE(access);
  EXPECT_EQ(access->path, "/dev/sr1");
  EXPECT_TRUE(access->environment.empty());
  const std::string folder = "/sys/class/block/sr1";
  EXPECT_EQ(access->recordingLockPath, std::filesystem::exists(folder) ? folder : "");
}

TEST(DriveAccessTest, WhatIsNoDriveIsNotGivenToAProgramThatWrites) {
  for (const char* name : {"/dev/rkv7", "/discs/a.kvdisc/sectors", "/dev/sda", "", "-M"}) {
    std::string problem;
    EXPECT_FALSE(accessToDrive(name, kDrives, KELVANE_LIBEXEC_DIR, &problem)) << name;
    EXPECT_NE(problem, "");
  }
}

TEST(DriveAccessTest, WithoutTheLibraryAnEmulatedDriveCannotBeShown) {
  std::string problem;
  EXPECT_FALSE(accessToDrive("kv0", kDrives, "/nowhere", &problem));
  EXPECT_NE(problem.find("kelvane-drive-shim.so"), std::string::npos) << problem;
}

}  // namespace
}  // namespace kelvane::launchers
