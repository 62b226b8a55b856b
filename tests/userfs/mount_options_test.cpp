// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/userfs/mount_options.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kelvane::tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(MountOptions, TheApplicationsOwnListAsksForANameAndMemoryOfMissingNames) {
  const auto options = userfs::parseMountOptions(
      {"volname=My Disc", "volicon=/a/disk.png", "local", "-f", "negative_vncache"});
  EXPECT_EQ(options.volumeName, "My Disc");
  EXPECT_TRUE(options.remembersMissingNames);
  EXPECT_THAT(options.passedOn, IsEmpty());
}

TEST(MountOptions, WhatIsNotKnownIsPassedOn) {
  const auto options = userfs::parseMountOptions({"ro", "allow_root"});
  EXPECT_FALSE(options.remembersMissingNames);
  EXPECT_THAT(userfs::libfuseArguments(options),
              ElementsAre("kelvanefs", "-o", "fsname=kelvanefs", "-o", "subtype=kelvanefs", "-o",
                          "ro", "-o", "allow_root"));
}

TEST(MountOptions, CommasAndBackslashesOfANameAreEscaped) {
  const auto options = userfs::parseMountOptions({"volname=a,b\\c=d"});
  EXPECT_EQ(userfs::libfuseArguments(options)[2], "fsname=a\\,b\\\\c=d");
}

}  // namespace
}  // namespace kelvane::tests
