// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/volumes/mount_table.h"

#include <gtest/gtest.h>
#include <sys/statvfs.h>

#include <filesystem>

#include "volumes/temporary_prefix.h"

namespace kelvane {
namespace {

TEST(MountTableTest, ALineGivesIdParentMountPointTypeAndSource) {
  const auto table =
      parseMountTable("36 35 98:0 /mnt1 /mnt2 rw,noatime master:1 - ext3 /dev/root rw\n");
  ASSERT_EQ(table.size(), 1U);
  EXPECT_EQ(table[0], (MountTableLine{36, 35, "/mnt2", "ext3", "/dev/root"}));
}

TEST(MountTableTest, ALineMayHaveNoOptionalFieldOrMany) {
  const auto table = parseMountTable(
      "1 0 0:1 / / rw - ext4 /dev/sda1 rw\n"
      "2 1 0:2 / /a rw shared:2 master:1 propagate_from:7 - tmpfs tmpfs rw\n");
  ASSERT_EQ(table.size(), 2U);
  EXPECT_EQ(table[1].kernelType, "tmpfs");
}

TEST(MountTableTest, OctalEscapesOfMountPointAndSourceAreUndone) {
  const auto table = parseMountTable(
      "2 1 0:2 / /Volumes/MY\\040DISC\\0111\\012x\\134y ro - fuse.cd9660 /dev/kv\\0430 ro\n");
  ASSERT_EQ(table.size(), 1U);
  EXPECT_EQ(table[0].mountedOn, "/Volumes/MY DISC\t1\nx\\y");
  EXPECT_EQ(table[0].mountedFrom, "/dev/kv#0");
}

TEST(MountTableTest, ABackslashWithoutThreeOctalDigitsStaysAsItIs) {
  const auto table = parseMountTable("2 1 0:2 / /a\\04 rw - t \\999\\777 rw\n");
  ASSERT_EQ(table.size(), 1U);
  EXPECT_EQ(table[0].mountedOn, "/a\\04");
  EXPECT_EQ(table[0].mountedFrom, "\\999\\777");
}

TEST(MountTableTest, BytesBeyondAsciiAreKept) {
  const auto table = parseMountTable("2 1 0:2 / /Volumes/Äpfel ro - iso9660 /dev/sr0 ro");
  ASSERT_EQ(table.size(), 1U);
  EXPECT_EQ(table[0].mountedOn, "/Volumes/Äpfel");
}

TEST(MountTableTest, LinesOfAnotherFormAreLeftOut) {
  EXPECT_TRUE(parseMountTable("").empty());
  EXPECT_TRUE(parseMountTable("\n\n").empty());
  EXPECT_TRUE(parseMountTable("1 0 0:1 / / rw ext4 /dev/sda1 rw\n").empty());
  EXPECT_TRUE(parseMountTable("1 0 0:1 / / rw - ext4\n").empty());
  EXPECT_TRUE(parseMountTable("x 0 0:1 / / rw - ext4 /dev/sda1 rw\n").empty());
  EXPECT_TRUE(parseMountTable("1 0x 0:1 / / rw - ext4 /dev/sda1 rw\n").empty());
}

constexpr char kTable[] =
    "1 0 0:1 / / rw - ext4 /dev/sda1 rw\n"
    "2 1 0:2 / /Volumes/ONE ro - fuse.cd9660 /dev/kv0s0 ro\n"
    "3 1 0:3 / /Volumes/ONE\\0401 ro - udf /dev/kv1 ro\n"
    "4 1 0:4 / /tmp rw - tmpfs tmpfs rw\n"
    "5 4 0:5 / /tmp/kelvanefsmount/.mnt ro - iso9660 /dev/sr0 ro\n";

TEST(MountTableTest, APathBelongsToTheMountThatItLiesBelow) {
  const auto table = parseMountTable(kTable);
  EXPECT_EQ(mountOfPath(table, "/Volumes/ONE")->id, 2);
  EXPECT_EQ(mountOfPath(table, "/Volumes/ONE/folder/file")->id, 2);
  EXPECT_EQ(mountOfPath(table, "/Volumes/ONE 1/x")->id, 3);
  EXPECT_EQ(mountOfPath(table, "/tmp/kelvanefsmount/.mnt")->id, 5);
  EXPECT_EQ(mountOfPath(table, "/tmp/kelvanefsmount")->id, 4);
}

TEST(MountTableTest, APlainFolderBesideMountsBelongsToTheFileSystemItLiesOn) {
  const auto table = parseMountTable(kTable);
  EXPECT_EQ(mountOfPath(table, "/Volumes/PLAIN")->mountedOn, "/");
  EXPECT_EQ(mountOfPath(table, "/Volumes/ONETWO")->mountedOn, "/");
  EXPECT_EQ(mountOfPath(table, "/")->mountedOn, "/");
}

TEST(MountTableTest, OfMountsAtOnePlaceTheLastCounts) {
  const auto stacked = parseMountTable(
      "1 0 0:1 / / rw - ext4 /dev/sda1 rw\n"
      "2 1 0:2 / /mnt rw - tmpfs first rw\n"
      "3 2 0:3 / /mnt rw - tmpfs second rw\n"
      "4 3 0:4 / /mnt rw - tmpfs third rw\n");
  EXPECT_EQ(mountOfPath(stacked, "/mnt/x")->mountedFrom, "third");
  const auto sameParent = parseMountTable(
      "1 0 0:1 / / rw - ext4 /dev/sda1 rw\n"
      "2 1 0:2 / /mnt rw - tmpfs first rw\n"
      "3 1 0:3 / /mnt rw - tmpfs second rw\n");
  EXPECT_EQ(mountOfPath(sameParent, "/mnt")->mountedFrom, "second");
}

TEST(MountTableTest, AMountBelowOneThatWasCoveredLaterDoesNotCount) {
  const auto table = parseMountTable(
      "1 0 0:1 / / rw - ext4 /dev/sda1 rw\n"
      "2 1 0:2 / /a/b rw - tmpfs covered rw\n"
      "3 1 0:3 / /a rw - tmpfs cover rw\n");
  EXPECT_EQ(mountOfPath(table, "/a/b/c")->mountedFrom, "cover");
}

TEST(MountTableTest, ATableWithoutItsRootStillAnswersForWhatItHolds) {
  const auto table = parseMountTable("7 3 0:2 / /mnt rw - tmpfs part rw\n");
  EXPECT_EQ(mountOfPath(table, "/mnt/x")->mountedFrom, "part");
  EXPECT_EQ(mountOfPath(table, "/other"), nullptr);
}

TEST(MountTableTest, LinesThatClaimToBeTheirOwnOrEachOthersParentEndTheWalk) {
  const auto own = parseMountTable("1 1 0:1 / / rw - ext4 root rw\n");
  EXPECT_EQ(mountOfPath(own, "/x")->mountedFrom, "root");
  const auto ring = parseMountTable(
      "1 2 0:1 / / rw - ext4 a rw\n"
      "2 1 0:1 / / rw - ext4 b rw\n");
  EXPECT_EQ(mountOfPath(ring, "/x"), nullptr);
}

TEST(MountTableTest, BothKindsOfIsoVolumeAreOfTypeCd9660AndOthersKeepTheirs) {
  EXPECT_EQ(fileSystemType("iso9660"), "cd9660");
  EXPECT_EQ(fileSystemType("fuse.cd9660"), "cd9660");
  EXPECT_EQ(fileSystemType("udf"), "udf");
  EXPECT_EQ(fileSystemType("fuse.kelvanefs"), "fuse.kelvanefs");
  EXPECT_EQ(fileSystemType(""), "");
}

TEST(MountTableTest, TheEntryOfAPathHasTheSizesThatTheSystemGives) {
  const test::TemporaryPrefix prefix;
  struct statvfs sizes = {};
  ASSERT_EQ(statvfs(prefix.volumes().c_str(), &sizes), 0);
  const auto entry = mountTableEntry(prefix.volumes());
  ASSERT_TRUE(entry.has_value());
  EXPECT_EQ(entry->totalBlocks, static_cast<int64_t>(sizes.f_blocks));
  EXPECT_EQ(entry->blockSize, static_cast<int64_t>(sizes.f_frsize));
  EXPECT_FALSE(entry->type.empty());
}

TEST(MountTableTest, AFolderInVolumesThatIsNoMountHasItsParentsEntry) {
  const test::TemporaryPrefix prefix;
  std::filesystem::create_directory(prefix.volumes() + "/PLAIN");
  const auto folder = mountTableEntry(prefix.volumes() + "/PLAIN");
  const auto parent = mountTableEntry(prefix.path());
  ASSERT_TRUE(folder && parent);
  EXPECT_EQ(folder->mountedOn, parent->mountedOn);
  EXPECT_EQ(folder->mountedFrom, parent->mountedFrom);
  EXPECT_FALSE(isMountPoint(prefix.volumes() + "/PLAIN"));
}

TEST(MountTableTest, ALinkHasTheEntryOfWhatItPointsTo) {
  const test::TemporaryPrefix prefix;
  std::filesystem::create_symlink("/proc", prefix.volumes() + "/link");
  const auto entry = mountTableEntry(prefix.volumes() + "/link");
  ASSERT_TRUE(entry.has_value());
  EXPECT_EQ(entry->mountedOn, "/proc");
  EXPECT_EQ(entry->type, "proc");
}

TEST(MountTableTest, APathThatDoesNotExistHasNoEntry) {
  const test::TemporaryPrefix prefix;
  EXPECT_FALSE(mountTableEntry(prefix.path() + "/nothing").has_value());
  EXPECT_FALSE(mountTableEntry("").has_value());
}

TEST(MountTableTest, AMountPointIsRecognisedThroughALinkInItsPath) {
  const test::TemporaryPrefix prefix;
  std::filesystem::create_symlink("/", prefix.path() + "/root");
  EXPECT_TRUE(isMountPoint("/proc"));
  EXPECT_TRUE(isMountPoint(prefix.path() + "/root/proc"));
}

}  // namespace
}  // namespace kelvane
