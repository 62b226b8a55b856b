// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/volumes/disc_mount.h"

#include <filesystem>
#include <fstream>

#include "platform/foundation/system_log.h"
#include "platform/volumes/mount_table.h"
#include "volumes/disc_fixture.h"

namespace kelvane {
namespace {

using DiscMountTest = test::DiscFixture;

TEST_F(DiscMountTest, AMountedDiscIsInTheTableAsAnIsoVolumeFromItsSlice) {
  makeDisc("kv0", "DISC");
  mountAt("kv0", prefix_.volumes() + "/DISC");
  const auto entry = mountTableEntry(prefix_.volumes() + "/DISC");
  ASSERT_TRUE(entry.has_value());
  EXPECT_EQ(entry->type, "cd9660");
  EXPECT_EQ(entry->mountedFrom, "/dev/kv0s0");
  EXPECT_EQ(entry->mountedOn, prefix_.volumes() + "/DISC");
  EXPECT_EQ(entry->blockSize, 2048);
  EXPECT_TRUE(std::filesystem::exists(prefix_.volumes() + "/DISC/hello"));
}

TEST_F(DiscMountTest, TheVolumesNameIsReadFromTheDisc) {
  makeDisc("kv0", "Name with blanks");
  EXPECT_EQ(volumeNameOfDisc("kv0", 0), "Name with blanks");
  EXPECT_EQ(volumeNameOfDisc("kv0s0", 0), "Name with blanks");
  makeDisc("kv0", "");
  EXPECT_EQ(volumeNameOfDisc("kv0", 0), "");
}

TEST_F(DiscMountTest, ADiscWithoutAnIsoVolumeHasNoNameAndIsNotMounted) {
  makeForeignDisc("kv0");
  EXPECT_FALSE(volumeNameOfDisc("kv0", 0).has_value());
  std::string error;
  EXPECT_FALSE(mountDisc({"kv0", 0, prefix_.volumes()}, &error));
  EXPECT_FALSE(error.empty());
  EXPECT_EQ(error.find('\n'), std::string::npos);
  EXPECT_FALSE(isMountPoint(prefix_.volumes()));
}

TEST_F(DiscMountTest, ADriveThatDoesNotExistIsNamedInTheError) {
  std::string error;
  EXPECT_FALSE(mountDisc({"kv7", 0, prefix_.volumes()}, &error));
  EXPECT_EQ(error, "There is no drive kv7.");
}

TEST_F(DiscMountTest, AnInstallationWithoutTheProgramSaysSo) {
  makeDisc("kv0", "DISC");
  const test::ScopedVariable elsewhere("KELVANEFS_EXECUTABLE", prefix_.path() + "/bin/kelvanefs");
  std::string error;
  EXPECT_FALSE(mountDisc({"kv0", 0, prefix_.volumes()}, &error));
  EXPECT_EQ(error, "The program isomount is missing from this installation.");
}

TEST_F(DiscMountTest, AMountThatIsOnlyStartedEndsWhenTheVolumeAnswers) {
  makeDisc("kv0", "DISC");
  const auto task = startMountingDisc({"kv0", 0, prefix_.volumes()});
  ASSERT_NE(task, nullptr);
  ASSERT_TRUE(task->waitBlocking(-1));
  EXPECT_EQ(task->terminationStatus(), 0);
  EXPECT_EQ(mountTableEntry(prefix_.volumes())->mountedFrom, "/dev/kv0");
}

}  // namespace
}  // namespace kelvane
