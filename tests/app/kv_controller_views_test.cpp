// SPDX-License-Identifier: GPL-2.0-or-later
#include <gmock/gmock.h>
#include <sys/mount.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QTranslator>
#include <filesystem>

#include "app/batch_run.h"
#include "app/controller_fixture.h"
#include "platform/foundation/paths.h"

namespace kelvane::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class KVControllerViews : public ControllerFixture {};

/// A text for one key, with a place for a number.
class SizeText : public QTranslator {
 public:
  SizeText() { QCoreApplication::installTranslator(this); }
  ~SizeText() override { QCoreApplication::removeTranslator(this); }
  bool isEmpty() const override { return false; }
  QString translate(const char*, const char* key, const char*, int) const override {
    return QLatin1String(key) == QLatin1String("viewSizeOfDisk") ? QStringLiteral("%i MB")
                                                                 : QString();
  }
};

TEST_F(KVControllerViews, TheRectanglesAreFixed) {
  EXPECT_EQ(KVController::inWindowRect, (Rect{0, 33, 402, 86}));
  EXPECT_EQ(KVController::leftOfWindowRect, (Rect{-402, 33, 402, 86}));
  EXPECT_EQ(KVController::rightOfWindowRect, (Rect{402, 33, 402, 86}));
}

TEST_F(KVControllerViews, SettingTheSameValueChangesNothing) {
  controller_.setMediaIsMounted(false);
  turn();
  EXPECT_THAT(newCalls(), IsEmpty());
}

TEST_F(KVControllerViews, AMountedDiscSlidesInAndTheListSlidesOutToTheLeft) {
  controller_.setMediaIsMounted(true);
  EXPECT_THAT(newCalls(), ElementsAre("header headerDisksRemounted", "caption buttonclose"));
  turn();
  EXPECT_THAT(newCalls(), ElementsAre("duration 600 ms", "message to left", "diskScroll to left",
                                      "mountedItem to in"));
}

TEST_F(KVControllerViews, TheWayBackMovesTheOpenedDiscDirectlyAndLeavesTheCaption) {
  controller_.setMediaIsMounted(true);
  turn();
  newCalls();
  controller_.setMediaIsMounted(false);
  EXPECT_THAT(newCalls(), ElementsAre("header headerDisksAvail"));
  turn();
  EXPECT_THAT(newCalls(), ElementsAre("duration 600 ms", "message to in", "diskScroll to in",
                                      "mountedItem to right direct", "burn to right"));
}

TEST_F(KVControllerViews, TheBurnViewSlidesInAfterTheOpenedDisc) {
  controller_.showBurnView();
  EXPECT_THAT(newCalls(), ElementsAre("duration 600 ms", "mountedItem to left", "burn to in"));
}

TEST_F(KVControllerViews, WithoutAVolumeTheNamesAreFilledAllTheSame) {
  DeviceRecord record;
  record.DRDevice = &device_;
  record.description = {"SAMPLE", "KELVANE BURNER", "CDR"};
  controller_.setCurrentDeviceDictionary(record);
  controller_.performUpdateMountedItemView();
  EXPECT_THAT(newCalls(), ElementsAre("size viewSizeNotAvail", "volume SAMPLE",
                                      "device CDR in KELVANE BURNER"));
}

// Whoever asks a volume keeps it from being unmounted meanwhile, by a command of batch mode too.
TEST_F(KVControllerViews, AVolumeWhoseSizeIsNotShownIsLeftAlone) {
  DeviceRecord record;
  record.description = {"SAMPLE", "KELVANE BURNER", "CDR"};
  controller_.setCurrentDeviceDictionary(record);
  window_.sizeIsShown = false;
  controller_.performUpdateMountedItemView();
  EXPECT_THAT(newCalls(), ElementsAre("volume SAMPLE", "device CDR in KELVANE BURNER"));
}

TEST(BatchRunViews, TheSizeOfTheVolumeIsNotShown) {
  EXPECT_FALSE(BatchRun(BatchOptions{}).showsSizeInformation());
}

TEST_F(KVControllerViews, TheViewOfTheOpenedDiscIsFilledWhenItIsShown) {
  DeviceRecord record;
  record.description = {"SAMPLE", "KELVANE BURNER", "CDR"};
  controller_.setCurrentDeviceDictionary(record);
  controller_.showMountedView();
  EXPECT_FALSE(window_.has("volume SAMPLE")) << "filled in place";
  turn();
  EXPECT_TRUE(window_.has("volume SAMPLE"));
}

TEST_F(KVControllerViews, FreeSpaceIsToldInWholeMegabytesThatAreThere) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can mount a volume of a chosen size";
  DeviceRecord record;
  record.description = {"SAMPLE", "KELVANE BURNER", "CDR"};
  controller_.setCurrentDeviceDictionary(record);
  const SizeText texts;
  std::filesystem::create_directories(paths::overlayMountPoint());
  constexpr uint64_t kPage = 4096;
  constexpr uint64_t kMegabyte = 1048576;
  for (const uint64_t bytes : {kMegabyte - kPage, kMegabyte, 3 * kMegabyte - kPage}) {
    const std::string size = "size=" + std::to_string(bytes);
    const std::string volume = paths::overlayMountPoint();
    ASSERT_EQ(mount("none", volume.c_str(), "tmpfs", 0, size.c_str()), 0);
    struct statvfs status = {};
    statvfs(volume.c_str(), &status);
    controller_.performUpdateMountedItemView();
    EXPECT_EQ(umount(volume.c_str()), 0);
    ASSERT_EQ(status.f_bfree * status.f_frsize, bytes);
    EXPECT_THAT(newCalls(), testing::Contains("size " + std::to_string(bytes / kMegabyte) + " MB"));
  }
}

TEST_F(KVControllerViews, HoweverOftenARefreshIsAskedForOneWaits) {
  DeviceRecord record;
  record.description = {"SAMPLE", "KELVANE BURNER", "CDR"};
  controller_.setCurrentDeviceDictionary(record);
  for (int i = 0; i < 1000; ++i) controller_.updateMountedItemView();
  turn();
  EXPECT_EQ(newCalls().size(), 3u);
  controller_.updateMountedItemView();
  turn();
  EXPECT_EQ(newCalls().size(), 3u);
}

}  // namespace
}  // namespace kelvane::test
