// SPDX-License-Identifier: GPL-2.0-or-later
//
// The life of an opened disc, on a real mount: what opening shows, and how it ends.
#include <sys/inotify.h>
#include <unistd.h>

#include <algorithm>
#include <array>

#include "app/open_disc_fixture.h"
#include "foundation/temporary_user_defaults.h"
#include "media/recorded_log.h"
#include "overlayfs/burn_fs_delegate.h"
#include "platform/foundation/main_thread.h"
#include "platform/foundation/user_defaults.h"
#include "platform/recording/dr_notification_center.h"
#include "platform/volumes/mount_table.h"

namespace kelvane::test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

using OpenDisc = OpenDiscTest;

/// What has happened in a folder since the object was made, as "created NAME" and "deleted NAME".
class FolderEvents {
 public:
  explicit FolderEvents(const std::string& folder) : inotify_(inotify_init1(IN_NONBLOCK)) {
    inotify_add_watch(inotify_, folder.c_str(), IN_CREATE | IN_DELETE);
  }
  ~FolderEvents() { ::close(inotify_); }
  FolderEvents(const FolderEvents&) = delete;
  FolderEvents& operator=(const FolderEvents&) = delete;

  std::vector<std::string> all() const {
    alignas(inotify_event) std::array<char, 4096> events;
    const ssize_t length = ::read(inotify_, events.data(), events.size());
    std::vector<std::string> found;
    for (ssize_t at = 0; at < length;) {
      const auto* event = reinterpret_cast<const inotify_event*>(events.data() + at);
      found.push_back(std::string((event->mask & IN_CREATE) != 0 ? "created " : "deleted ") +
                      event->name);
      at += static_cast<ssize_t>(sizeof(inotify_event) + event->len);
    }
    return found;
  }

 private:
  int inotify_;
};

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
  ASSERT_TRUE(waitFor([this] { return window_.asked.size() >= 2; }));
  close();
  EXPECT_THAT(
      window_.asked,
      ElementsAre("reveal " + volume_ + " below " + paths::volumesDirectory() + "/", "hide"));
}

TEST_F(OpenDiscToHide, IsShownToNobodyBeforeItHasBeenLeftToSettleAndTried) {
  close();
  ControllerServices services = services_;
  std::optional<FolderEvents> events;
  services.sleep = [&](std::chrono::milliseconds) {
    EXPECT_THAT(window_.asked, IsEmpty());
    events.emplace(controller_->tmpDirPath());
  };
  window_.asked.clear();
  window_.onReveal = [&events] {
    ASSERT_TRUE(events.has_value()) << "shown before anybody has waited";
    EXPECT_THAT(events->all(), ElementsAre("created .kvfsvolume", "deleted .kvfsvolume"));
  };
  openAnew(services);
  ASSERT_TRUE(waitFor([this] { return window_.asked.size() >= 2; }));
  close();
}

TEST_F(OpenDiscWithDefaults, LeavesTheWindowWhereItIsUnlessTheUserWantsOtherwise) {
  close();
  EXPECT_THAT(window_.asked, IsEmpty());
}

TEST_F(OpenDisc, IsAnnouncedWithTheOpenButtonAndProbedWithoutATrace) {
  EXPECT_THAT(window_.shown, Contains(HideableView::OpenButton));
  EXPECT_FALSE(fs::exists(volume_ + "/.kvfsvolume"));
  EXPECT_TRUE(fs::is_empty(controller_->tmpDirPath())) << "the probe has left a change";
  close();
}

TEST_F(OpenDisc, IsLeftASecondToSettleAndThenTriedWithAFileThatGoesAgain) {
  close();
  ControllerServices services = services_;
  std::optional<FolderEvents> events;
  services.sleep = [&](std::chrono::milliseconds duration) {
    EXPECT_EQ(duration, std::chrono::seconds(1));
    EXPECT_TRUE(controller_->mediaIsMounted());
    EXPECT_THAT(window_.shown, Contains(HideableView::OpenButton));
    events.emplace(controller_->tmpDirPath());
  };
  window_.shown.clear();
  openAnew(services);
  ASSERT_TRUE(waitFor([this] { return controller_->mediaIsMounted(); }));
  ASSERT_TRUE(events.has_value());
  EXPECT_THAT(events->all(), ElementsAre("created .kvfsvolume", "deleted .kvfsvolume"));
  close();
}

TEST_F(OpenDisc, StaysOpenWhileItIsUsedAndTheUserIsToldByWhom) {
  std::ofstream(volume_ + "/new.txt") << "new";
  std::optional<std::ifstream> user(volume_ + "/a.txt");
  EXPECT_FALSE(controller_->closeVolume());
  EXPECT_THAT(window_.alerts, ElementsAre("VolumeBusy"));
  EXPECT_THAT(window_.details, ElementsAre(testing::HasSubstr(volume_ + "/a.txt")));
  EXPECT_TRUE(fs::exists(volume_ + "/new.txt"));
  user.reset();
  controller_->closeVolume();
  ASSERT_TRUE(waitFor([this] { return window_.asksToBurn; }));
  controller_->burnConfirmationDidCancel();
  EXPECT_TRUE(waitFor([this] { return controller_->currentDevice() == nullptr; }));
}

TEST_F(OpenDisc, IsNotClosedByARequestAboutADiscThatIsNotSupported) {
  const std::ifstream user(volume_ + "/a.txt");  // Whoever tries to close is told of it.
  DeviceRecord refused;
  refused.DRDevice = device_;
  refused.unsupportedString = "full";
  window_.mediaController().addObjects({refused});
  window_.mediaController().setSelectionIndex(1);
  controller_->mountBurnFS();
  EXPECT_THAT(window_.alerts, IsEmpty());
  window_.mediaController().setSelectionIndex(std::nullopt);
  controller_->mountBurnFS();
  EXPECT_THAT(window_.alerts, ElementsAre("VolumeBusy")) << "nothing selected is no such disc";
}

TEST_F(OpenDisc, ThatIsClosedIsToldOfItsBytesAndHearsOfItsSizeNoMore) {
  std::ofstream(volume_ + "/new.txt") << "fifteen letters";
  controller_->closeVolume();
  ASSERT_TRUE(waitFor([this] { return window_.asksToBurn; }));
  EXPECT_EQ(controller_->sizetoburn(), 15.0);
  window_.sizes.clear();
  NotificationCenter::defaultCenter().post(kKelvaneFSSizeChanged, nullptr);
  bool reached = false;
  performOnMainThread([&reached] { reached = true; });
  ASSERT_TRUE(waitFor([&reached] { return reached; }));
  EXPECT_THAT(window_.sizes, IsEmpty());
  controller_->burnConfirmationDidCancel();
  EXPECT_TRUE(waitFor([this] { return controller_->currentDevice() == nullptr; }));
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
  openAnew(services);
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
  controller_->setSizetoburn(7);
  device_->ejectMedia();
  ASSERT_TRUE(waitFor([this] { return controller_->currentDevice() == nullptr; }));
  EXPECT_THAT(log.lines(), testing::IsSupersetOf(
                               {"Opened media disappeared unexpectedly.",
                                "unexpected disk ejection. emergency of unmounting fuse without "
                                "burning."}));
  EXPECT_FALSE(window_.hasAsked);
  EXPECT_EQ(controller_->sizetoburn(), 7.0) << "there is nothing to be burned";
  EXPECT_FALSE(fs::exists(overlay));
  EXPECT_FALSE(fs::exists(volume_ + "/a.txt"));
  // Unlike those of mounting and unmounting, this observation outlives the volume.
  window_.sizes.clear();
  NotificationCenter::defaultCenter().post(kKelvaneFSSizeChanged, nullptr);
  EXPECT_TRUE(waitFor([this] { return !window_.sizes.empty(); }));
}

TEST_F(OpenDisc, KeepsItsChangesWhileTheDriveSpinsUpAgain) {
  std::ofstream(volume_ + "/new.txt") << "new";
  bool isLookedAt = false;
  DRNotificationCenter& center = DRNotificationCenter::currentRunLoopCenter();
  center.addObserver(
      this, [&isLookedAt](const Notification&) { isLookedAt = true; },
      DRDeviceStatusChangedNotification, device_);
  std::ofstream(disc_ + "/faults") << "on ready and later: sense 2/04/01\n";
  EXPECT_TRUE(waitFor([&isLookedAt] { return isLookedAt; }));
  EXPECT_TRUE(device_->mediaIsTransitioning());
  controller_->performScanForMedia();
  EXPECT_TRUE(controller_->mediaIsMounted());
  isLookedAt = false;
  fs::remove(disc_ + "/faults");
  EXPECT_TRUE(waitFor([&isLookedAt] { return isLookedAt; }));
  center.removeObserver(this);
  EXPECT_FALSE(device_->mediaIsTransitioning());
  EXPECT_TRUE(fs::exists(volume_ + "/new.txt"));
  EXPECT_TRUE(fs::exists(paths::hiddenMountPoint() + "/a.txt"));
  controller_->closeVolume();
  ASSERT_TRUE(waitFor([this] { return window_.asksToBurn; }));
  controller_->burnConfirmationDidCancel();
  EXPECT_TRUE(waitFor([this] { return controller_->currentDevice() == nullptr; }));
}

class OpenLargeDisc : public OpenDiscTest {
 protected:
  void SetUp() override {
    fs::create_directory(prefix_.path() + "/source");
    std::ofstream(prefix_.path() + "/source/large") << std::string(3 << 20, 'x');
    OpenDiscTest::SetUp();
  }
};

TEST_F(OpenLargeDisc, BearsTheNameOfItsVolumeAndHasTheRoomThatWholeMegabytesLeave) {
  const auto volume = mountTableEntry(volume_);
  const auto disc = mountTableEntry(paths::hiddenMountPoint());
  ASSERT_TRUE(volume.has_value() && disc.has_value());
  EXPECT_EQ(volume->mountedFrom, "SAMPLE");
  EXPECT_EQ(volume->totalBlocks * volume->blockSize, int64_t{680} << 20);
  EXPECT_EQ((volume->totalBlocks - volume->freeBlocks) * volume->blockSize,
            (disc->totalBlocks * disc->blockSize) >> 20 << 20);
  EXPECT_GE((volume->totalBlocks - volume->freeBlocks) * volume->blockSize, int64_t{3} << 20);
  close();
}

class OpenBlankDisc : public OpenDiscTest {
 protected:
  std::vector<std::string> contents() const override { return {}; }
};

TEST_F(OpenBlankDisc, IsUntitledAndEmptyAndNothingIsMountedBesideItsVolume) {
  EXPECT_EQ(controller_->currentDeviceDictionary()->description.volumename, "untitled");
  const auto volume = mountTableEntry(volume_);
  ASSERT_TRUE(volume.has_value());
  EXPECT_EQ(volume->mountedFrom, "untitled");
  EXPECT_EQ(volume->freeBlocks, volume->totalBlocks);
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
