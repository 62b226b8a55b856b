// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/volumes/desktop_mounts.h"

#include <gtest/gtest.h>

namespace kelvane {
namespace {

TEST(DesktopMountsTest, DiscsOfRealDrivesThatTheDesktopMountedElsewhereAreFound) {
  const auto table = parseMountTable(
      "1 0 0:1 / / rw - ext4 /dev/sda1 rw\n"
      "2 1 0:2 / /media/ann/MY\\040DISC ro - iso9660 /dev/sr0 ro\n"
      "3 1 0:3 / /run/media/ann/DVD ro - udf /dev/sr1 ro\n"
      "4 1 0:4 / /run/media/ann/HYBRID ro - hfs /dev/sr2 ro\n");
  EXPECT_EQ(desktopDiscMounts(table, "/Volumes", "/tmp/kelvanefsmount/.mnt"),
            (std::vector<std::string>{"/media/ann/MY DISC", "/run/media/ann/DVD",
                                      "/run/media/ann/HYBRID"}));
}

TEST(DesktopMountsTest, WhatListingFindsTheHiddenMountAndWhatIsNoDriveAreNotGiven) {
  const auto table = parseMountTable(
      "1 0 0:1 / / rw - ext4 /dev/sda1 rw\n"
      "2 1 0:2 / /Volumes/DISC ro - iso9660 /dev/sr0 ro\n"
      "3 1 0:3 / /tmp/kelvanefsmount/.mnt ro - iso9660 /dev/sr0 ro\n"
      "5 1 0:5 / /mnt/image ro - iso9660 /dev/loop0 ro\n"
      "6 1 0:6 / /other/Volumes/X ro - fuse.cd9660 /dev/kv0s0 ro\n");
  EXPECT_TRUE(desktopDiscMounts(table, "/Volumes", "/tmp/kelvanefsmount/.mnt").empty());
}

}  // namespace
}  // namespace kelvane
