// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/volumes/volume_services.h"

#include <algorithm>
#include <filesystem>

#include "platform/foundation/paths.h"
#include "platform/foundation/system_log.h"
#include "volumes/disc_fixture.h"

namespace kelvane {
namespace {

using std::chrono::milliseconds;

class VolumeServicesTest : public test::DiscFixture {
 protected:
  VolumeServices& services_ = VolumeServices::system();
};

TEST_F(VolumeServicesTest, EveryEntryOfTheFolderOfVolumesIsListed) {
  std::filesystem::create_directory(prefix_.volumes() + "/A");
  std::filesystem::create_directory(prefix_.volumes() + "/B c");
  const std::vector<std::string> found = services_.visibleVolumePaths();
  EXPECT_NE(std::find(found.begin(), found.end(), prefix_.volumes() + "/A"), found.end());
  EXPECT_NE(std::find(found.begin(), found.end(), prefix_.volumes() + "/B c"), found.end());
}

TEST_F(VolumeServicesTest, OnlyAMountPointIsAVolume) {
  makeDisc("kv0", "DISC");
  mountAt("kv0", prefix_.volumes() + "/DISC");
  EXPECT_EQ(services_.volumeAtPath(prefix_.volumes() + "/DISC"), prefix_.volumes() + "/DISC");
  EXPECT_FALSE(services_.volumeAtPath(prefix_.volumes()).has_value());
  EXPECT_FALSE(services_.volumeAtPath(prefix_.path() + "/nothing").has_value());
}

TEST_F(VolumeServicesTest, TheFolderOfAVisibleVolumeGoesWithItsMountAndThatOfTheHiddenOneStays) {
  makeDisc("kv0", "DISC");
  mountAt("kv0", prefix_.volumes() + "/DISC");
  mountAt("kv0", paths::hiddenMountPoint());
  EXPECT_EQ(services_.unmountVolumeSync(prefix_.volumes() + "/DISC"), 0);
  EXPECT_EQ(services_.unmountVolumeSync(paths::hiddenMountPoint()), 0);
  EXPECT_FALSE(std::filesystem::exists(prefix_.volumes() + "/DISC"));
  EXPECT_TRUE(std::filesystem::exists(paths::hiddenMountPoint()));
}

TEST_F(VolumeServicesTest, AMountThatWasAskedForEndsTheSleepAndStaysWhenTheRequestIsGone) {
  makeDisc("kv0", "DISC");
  services_.createDirectory(paths::hiddenMountPoint());
  auto request = services_.requestMount({"kv0s0", 0, paths::hiddenMountPoint()});
  ASSERT_NE(request, nullptr);
  // Ends long before the minutes it may take, or the test fails by its time limit.
  services_.sleepUnlessMounted(std::chrono::minutes(10), paths::hiddenMountPoint());
  const auto entry = services_.mountTableEntryOf(paths::hiddenMountPoint());
  ASSERT_TRUE(entry.has_value());
  EXPECT_EQ(entry->type, "cd9660");
  request.reset();
  EXPECT_TRUE(std::filesystem::exists(paths::hiddenMountPoint() + "/hello"));
}

TEST_F(VolumeServicesTest, WithoutAMountTheSleepLastsItsTime) {
  const auto before = std::chrono::steady_clock::now();
  services_.sleepUnlessMounted(milliseconds(20), prefix_.volumes());
  EXPECT_GE(std::chrono::steady_clock::now() - before, milliseconds(20));
}

TEST_F(VolumeServicesTest, ARequestThatFailsLeavesTheReasonInTheLog) {
  makeForeignDisc("kv0");
  std::vector<std::string> lines;
  const SystemLogRedirection log([&](const std::string& line) { lines.push_back(line); });
  auto request = services_.requestMount({"kv0", 0, prefix_.volumes()});
  test::awaitEndOfProgram();  // The request itself does not wait for ever.
  request.reset();
  ASSERT_EQ(lines.size(), 1U);
  EXPECT_TRUE(lines[0].starts_with("mounting kv0 failed: ")) << lines[0];
}

}  // namespace
}  // namespace kelvane
