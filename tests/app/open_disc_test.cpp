// SPDX-License-Identifier: GPL-2.0-or-later
//
// The life of an opened disc, on a real mount: what opening shows, and how it ends.
#include <algorithm>

#include "app/open_disc_fixture.h"
#include "foundation/temporary_user_defaults.h"
#include "media/recorded_log.h"
#include "overlayfs/burn_fs_delegate.h"
#include "platform/foundation/user_defaults.h"
#include "platform/volumes/mount_table.h"

namespace kelvane::test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

using OpenDisc = OpenDiscTest;

/// User defaults that are there before the disc is opened.
class OpenDiscWithDefaults : public OpenDiscTest {
 protected:
  TemporaryUserDefaults userDefaults_;
};

class OpenDiscToHide : public OpenDiscWithDefaults {
 protected:
  void SetUp() override {
    UserDefaults::standard().setBool(true, "autohide");
    OpenDiscTest::SetUp();
  }
};

TEST_F(OpenDiscToHide, RevealsItsVolumeAndThenHidesTheApplication) {
  ASSERT_TRUE(waitFor([this] { return window_.hidden > 0; }));
  EXPECT_THAT(window_.revealed, ElementsAre(volume_ + " below " + paths::volumesDirectory() + "/"));
  EXPECT_EQ(window_.hidden, 1);
  close();
}

TEST_F(OpenDiscWithDefaults, LeavesTheWindowWhereItIsUnlessTheUserWantsOtherwise) {
  close();
  EXPECT_THAT(window_.revealed, IsEmpty());
  EXPECT_EQ(window_.hidden, 0);
}

TEST_F(OpenDisc, IsAnnouncedWithTheOpenButtonAndProbedWithoutATrace) {
  EXPECT_THAT(window_.shown, Contains(HideableView::OpenButton));
  EXPECT_FALSE(fs::exists(volume_ + "/.kvfsvolume"));
  EXPECT_TRUE(fs::is_empty(controller_->tmpDirPath())) << "the probe has left a change";
  close();
}

TEST_F(OpenDisc, WithoutChangesIsClosedWithoutAQuestion) {
  close();
  EXPECT_FALSE(window_.hasAsked);
  EXPECT_THAT(window_.alerts, IsEmpty());
}

TEST_F(OpenDisc, WithAnyEntryInItsOverlayAsksByTheNameOfTheVolume) {
  fs::create_directory(volume_ + "/empty folder");
  controller_->closeVolume();
  ASSERT_TRUE(waitFor([this] { return window_.asksToBurn; }));
  EXPECT_EQ(window_.burnConfirmationDiskTitle(), "SAMPLE");
  EXPECT_EQ(controller_->currentDevice(), device_) << "the disc is the question's";
  controller_->burnConfirmationDidCancel();
  EXPECT_TRUE(waitFor([this] { return controller_->currentDevice() == nullptr; }));
}

TEST_F(OpenDisc, IsGivenBackWhereTheApplicationIsQuitWhileItIsBeingOpened) {
  close();
  std::vector<std::string> given;
  ControllerServices services = services_;
  services.discIsClosed = [&given](const std::string& bsdName) {
    EXPECT_FALSE(isMountPoint(paths::hiddenMountPoint())) << "a second mount would be in its way";
    given.push_back(bsdName);
  };
  controller_.emplace(window_, services);
  controller_->awakeFromNib();
  controller_->initialiseController();
  device_->loadMedia();
  ASSERT_TRUE(waitFor([this] { return controller_->currentDevice() != nullptr; }));
  ASSERT_FALSE(controller_->mediaIsMounted());
  const std::string overlay = controller_->tmpDirPath();
  controller_.reset();
  EXPECT_THAT(given, ElementsAre("kv0"));
  EXPECT_FALSE(fs::exists(overlay));
  EXPECT_FALSE(isMountPoint(volume_));
  EXPECT_FALSE(fs::exists(paths::hiddenMountFolder()));
}

TEST_F(OpenDisc, IsNotOpenedAgainByAFurtherRequestWhileItIsOpened) {
  close();
  device_->loadMedia();
  ASSERT_TRUE(waitFor([this] { return controller_->currentDevice() != nullptr; }));
  const std::string overlay = controller_->tmpDirPath();
  const RecordedLog log;
  controller_->mountBurnFS();
  ASSERT_TRUE(waitFor([this] { return controller_->mediaIsMounted(); }));
  const std::vector<std::string> lines = log.lines();
  EXPECT_EQ(std::count(lines.begin(), lines.end(), "Notified that Filesystem did mount."), 1);
  EXPECT_EQ(controller_->tmpDirPath(), overlay);
  close();
}

TEST_F(OpenDisc, ThatIsTakenOutLosesItsChangesAndStillHearsOfItsSize) {
  std::ofstream(volume_ + "/new.txt") << "new";
  const std::string overlay = controller_->tmpDirPath();
  const RecordedLog log;
  device_->ejectMedia();
  ASSERT_TRUE(waitFor([this] { return controller_->currentDevice() == nullptr; }));
  EXPECT_THAT(log.lines(), testing::IsSupersetOf(
                               {"Opened media disappeared unexpectedly.",
                                "unexpected disk ejection. emergency of unmounting fuse without "
                                "burning."}));
  EXPECT_FALSE(window_.hasAsked);
  EXPECT_FALSE(fs::exists(overlay));
  EXPECT_FALSE(fs::exists(volume_ + "/a.txt"));
  // Unlike those of mounting and unmounting, this observation outlives the volume.
  window_.sizes.clear();
  NotificationCenter::defaultCenter().post(kKelvaneFSSizeChanged, nullptr);
  EXPECT_TRUE(waitFor([this] { return !window_.sizes.empty(); }));
}

class OpenBlankDisc : public OpenDiscTest {
 protected:
  std::vector<std::string> contents() const override { return {}; }
};

TEST_F(OpenBlankDisc, IsUntitledAndEmptyAndNothingIsMountedBesideItsVolume) {
  EXPECT_EQ(controller_->currentDeviceDictionary()->description.volumename, "untitled");
  EXPECT_TRUE(fs::is_empty(volume_));
  EXPECT_FALSE(fs::exists(paths::hiddenMountPoint())) << "there is nothing to be mounted there";
  std::ofstream(volume_ + "/new.txt") << "new";
  controller_->closeVolume();
  ASSERT_TRUE(waitFor([this] { return window_.asksToBurn; }));
  EXPECT_EQ(window_.burnConfirmationDiskTitle(), "untitled");
  controller_->burnConfirmationDidCancel();
  EXPECT_TRUE(waitFor([this] { return controller_->currentDevice() == nullptr; }));
}

}  // namespace
}  // namespace kelvane::test
