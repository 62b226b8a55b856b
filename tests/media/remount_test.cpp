// SPDX-License-Identifier: GPL-2.0-or-later
// The operations on a disc's volume, with real mounts.
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>

#include "media/media_scan.h"
#include "media/quellbrook.h"
#include "media/recorded_log.h"
#include "platform/foundation/paths.h"
#include "platform/volumes/mount_table.h"
#include "platform/volumes/visible_mounts.h"
#include "volumes/disc_fixture.h"
#include "volumes/fake_device.h"

namespace kelvane {
namespace {

using Lines = std::vector<std::string>;

// The system's services, except that sleeping takes next to no time and does what the test wants.
class FastServices : public VolumeServices {
 public:
  std::vector<std::string> visibleVolumePaths() override { return real_.visibleVolumePaths(); }
  std::optional<MountTableEntry> mountTableEntryOf(const std::string& path) override {
    if (path == paths::hiddenMountPoint()) ++hiddenReads;
    return real_.mountTableEntryOf(path);
  }
  std::optional<std::string> volumeAtPath(const std::string& path) override {
    return real_.volumeAtPath(path);
  }
  int unmountVolumeSync(const std::string& volume) override {
    return real_.unmountVolumeSync(volume);
  }
  void createDirectory(const std::string& path) override { real_.createDirectory(path); }
  std::unique_ptr<MountRequest> requestMount(const DiscMount& mount) override {
    std::unique_ptr<MountRequest> request = real_.requestMount(mount);
    if (requestsEndFirst) test::awaitEndOfProgram();
    return request;
  }
  void sleep(std::chrono::milliseconds /*duration*/) override {
    ++sleeps;
    if (onSleep) onSleep();
  }
  void sleepUnlessMounted(std::chrono::milliseconds duration,
                          const std::string& mountPoint) override {
    real_.sleepUnlessMounted(pause.value_or(duration), mountPoint);
  }

  std::function<void()> onSleep;
  // How long a wait for the mount lasts at most; unset: as long as the code under test asks.
  std::optional<std::chrono::milliseconds> pause;
  // Whether the program that mounts has ended before anybody looks. A request that is given up does
  // not wait for ever for what it says.
  bool requestsEndFirst = false;
  int sleeps = 0;
  int hiddenReads = 0;

 private:
  VolumeServices& real_ = VolumeServices::system();
};

class RemountTest : public test::DiscFixture {
 protected:
  void SetUp() override {
    DiscFixture::SetUp();
    if (IsSkipped()) return;
    makeDisc("kv0", "MY DISC");
    drive_.disc = discFolder("kv0");
    drive_.setTracks({0, 11702});
    mounts_.update(drive_);
    ASSERT_TRUE(isMountPoint(visible_));
    mounts_.hold("kv0");
  }

  test::FakeDevice drive_{"kv0"};
  VisibleMounts mounts_;
  const std::string visible_ = prefix_.volumes() + "/MY DISC";
  const std::string hidden_ = paths::hiddenMountPoint();
  FastServices services_;
  test::RecordedLog log_;
};

TEST_F(RemountTest, TheScanFindsTheVisibleVolumeAtOnce) {
  DRDevice* const devices[] = {&drive_};
  const std::vector<DeviceRecord> records = buildDeviceRecords(devices, services_);
  ASSERT_EQ(records.size(), 1U);
  EXPECT_EQ(records[0].description.volumename, "MY DISC");
  EXPECT_TRUE(isUsable(records[0])) << *records[0].unsupportedString;
  EXPECT_EQ(services_.sleeps, 0);
}

TEST_F(RemountTest, TheDiscMovesFromSightToTheHiddenMountPoint) {
  EXPECT_EQ(quellbrook::remounthidden(drive_), hidden_);
  EXPECT_FALSE(std::filesystem::exists(visible_));
  EXPECT_TRUE(std::filesystem::exists(hidden_ + "/hello"));
  const auto entry = mountTableEntry(hidden_);
  ASSERT_TRUE(entry.has_value());
  EXPECT_EQ(entry->mountedFrom, "/dev/kv0s0");
  EXPECT_GT(quellbrook::fsMediaMBUsed(drive_, hidden_), 0.0);
  EXPECT_EQ(log_.lines(), (Lines{"unmount attempt 0"}));
}

TEST_F(RemountTest, AMountIsSeenByTheReadAfterTheWaitThatItEnded) {
  // However slow this machine is: the wait ends with the mount, never with its time.
  services_.pause = std::chrono::minutes(10);
  EXPECT_EQ(quellbrook::remounthidden(drive_, services_), hidden_);
  EXPECT_LE(services_.hiddenReads, 2);
}

TEST_F(RemountTest, ADiscThatIsStillReadIsTriedUntilItIsFree) {
  auto reader = std::make_unique<std::ifstream>(visible_ + "/hello");
  ASSERT_TRUE(reader->is_open());
  services_.onSleep = [&] {
    if (services_.sleeps == 3) reader.reset();
  };
  EXPECT_EQ(quellbrook::remounthidden(drive_, services_), hidden_);
  EXPECT_EQ(log_.lines(), (Lines{"unmount attempt -47", "unmount attempt -47",
                                 "unmount attempt -47", "unmount attempt 0"}));
}

TEST_F(RemountTest, ADiscThatStaysInUseIsGivenUpAndStaysVisible) {
  const std::ifstream reader(visible_ + "/hello");
  ASSERT_TRUE(reader.is_open());
  EXPECT_EQ(quellbrook::remounthidden(drive_, services_), std::nullopt);
  EXPECT_EQ(services_.sleeps, 50);
  EXPECT_EQ(log_.lines().size(), 51U);
  EXPECT_EQ(log_.lines().back(), "Remounting aborted: Unmount failed: -47 ");
  EXPECT_TRUE(isMountPoint(visible_));
}

TEST_F(RemountTest, ADiscThatCannotBeReadAnyMoreIsGivenUp) {
  services_.pause = std::chrono::milliseconds(1);
  services_.requestsEndFirst = true;
  makeForeignDisc("kv0");
  EXPECT_EQ(quellbrook::remounthidden(drive_, services_), std::nullopt);
  EXPECT_EQ(services_.hiddenReads, 151);
  const Lines lines = log_.lines();
  ASSERT_EQ(lines.size(), 3U);
  EXPECT_EQ(lines[1], "giving up on mounting bsd device kv0s0");
  EXPECT_TRUE(lines[2].starts_with("mounting kv0s0 failed: ")) << lines[2];
  EXPECT_FALSE(isMountPoint(hidden_));
}

TEST_F(RemountTest, AnAddedSessionIsTheOneThatIsRemounted) {
  appendSession("kv0", "SECOND", 1000);
  drive_.setTracks({0, 1000, 20000});
  EXPECT_EQ(quellbrook::remounthidden(drive_, services_), hidden_);
  EXPECT_TRUE(std::filesystem::exists(hidden_ + "/hello"));
  // The whole disc counts as used, not the last session alone.
  EXPECT_GT(mountTableEntry(hidden_)->totalBlocks, 1000);
}

TEST_F(RemountTest, UnmountReleasesTheHiddenMountAndKeepsItsFolder) {
  ASSERT_EQ(quellbrook::remounthidden(drive_, services_), hidden_);
  quellbrook::unmount(drive_);
  EXPECT_FALSE(isMountPoint(hidden_));
  EXPECT_TRUE(std::filesystem::is_directory(hidden_));
}

TEST_F(RemountTest, AReleasedDiscIsVisibleAgain) {
  ASSERT_EQ(quellbrook::remounthidden(drive_, services_), hidden_);
  quellbrook::unmount(drive_);
  mounts_.release("kv0");
  mounts_.update(drive_);
  EXPECT_TRUE(isMountPoint(visible_));
}

}  // namespace
}  // namespace kelvane
