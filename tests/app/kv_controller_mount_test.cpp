// SPDX-License-Identifier: GPL-2.0-or-later
#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <thread>

#include "app/controller_fixture.h"
#include "platform/foundation/paths.h"
#include "platform/volumes/unmount.h"

namespace kelvane::test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

namespace fs = std::filesystem;

class KVControllerMount : public ControllerFixture {
 protected:
  void listSample(const std::string& identity = "the disc", bool isBlank = false) {
    DeviceRecord record;
    record.DRDevice = &device_;
    record.mediaIdentity = identity;
    record.description = {"SAMPLE", "KELVANE BURNER", "CDR"};
    record.consideredBlank = isBlank;
    record.totalMB = "680.0";
    window_.mediaController().addObjects({record});
    window_.mediaController().setSelectionIndex(0);
  }

  void listUnsupported() {
    DeviceRecord record;
    record.DRDevice = &device_;
    record.unsupportedString = "full";
    window_.mediaController().addObjects({record});
    window_.mediaController().setSelectionIndex(0);
  }

  /// Another user's link at a name that an opening of the next minute would use. It must not be
  /// followed, and the disc stays where it is.
  void expectRefusalOfLinkAt(const std::function<std::string(const std::string&)>& nameFor) {
    const std::string victim = prefix_.path() + "/victim";
    fs::create_directory(victim);
    std::ofstream(victim + "/file") << "precious";
    constexpr int kSeconds = 60;
    const int32_t now = paths::secondsSinceReferenceDate();
    for (int32_t second = now; second < now + kSeconds; ++second) {
      const std::string name = nameFor(paths::overlayDirectory(second));
      if (!fs::is_symlink(name)) fs::create_symlink(victim, name);
    }
    listSample();
    volumes_.addVisible(paths::volumesDirectory() + "/SAMPLE", "/dev/kv0s0");
    controller_.mountBurnFS();
    turnUntil([this] { return controller_.currentDevice() == nullptr; });
    ASSERT_EQ(window_.alerts.size(), 1u);
    EXPECT_EQ(window_.alerts[0].messageKey, "Unmountfailed");
    EXPECT_THAT(window_.alerts[0].detail,
                testing::HasSubstr(nameFor(controller_.tmpDirPath()) + " is somebody else's"));
    EXPECT_THAT(volumes_.unmounted, IsEmpty()) << "the disc's own volume was touched";
    EXPECT_EQ(std::distance(fs::directory_iterator(victim), fs::directory_iterator()), 1);
    EXPECT_EQ(fs::file_size(victim + "/file"), 8u);
  }
};

TEST_F(KVControllerMount, WithNothingSelectedAnOpenRequestIsRefusedWithABeep) {
  controller_.mountBurnFS();
  EXPECT_THAT(newCalls(), ElementsAre("beep"));
}

TEST_F(KVControllerMount, DuringABurnAnOpenRequestIsRefusedWithABeep) {
  listSample();
  controller_.setBurnInProgress(true);
  controller_.mountBurnFS();
  EXPECT_THAT(newCalls(), ElementsAre("beep"));
}

TEST_F(KVControllerMount, AnUnsupportedDiscIsNotOpenedAndNothingIsSaid) {
  listUnsupported();
  controller_.mountBurnFS();
  EXPECT_THAT(newCalls(), IsEmpty());
}

TEST_F(KVControllerMount, DuringABurnTheRequestIsRefusedAlsoWhereItWouldCloseOrComeToNothing) {
  listUnsupported();
  controller_.setBurnInProgress(true);
  controller_.mountBurnFS();
  EXPECT_THAT(newCalls(), ElementsAre("beep"));
  controller_.setMediaIsMounted(true);
  window_.mediaController().setSelectionIndex(std::nullopt);
  turn();
  newCalls();
  controller_.mountBurnFS();
  EXPECT_THAT(newCalls(), ElementsAre("beep"));
}

// That it closes the disc is shown where there is a volume.
TEST_F(KVControllerMount, WithAnOpenDiscAndNothingSelectedTheRequestIsNotRefused) {
  controller_.setMediaIsMounted(true);
  turn();
  newCalls();
  controller_.mountBurnFS();
  EXPECT_THAT(newCalls(), IsEmpty());
}

TEST_F(KVControllerMount, ADiscThatIsMountedNowhereFailsToOpenWithASheetAndMayBeTriedAgain) {
  listSample();
  controller_.mountBurnFS();
  EXPECT_EQ(controller_.currentDevice(), &device_);
  controller_.mountBurnFS();  // Under way already: ignored.
  turnUntil([this] { return controller_.currentDevice() == nullptr; });
  EXPECT_THAT(newCalls(), ElementsAre("header headerDisksMounting", "opened kv0",
                                      "alert Unmountfailed Unmountfailedlong",
                                      "header headerDisksAvail", "closed kv0"));
  ASSERT_EQ(window_.alerts.size(), 1u);
  EXPECT_EQ(window_.alerts[0].style, Alert::Style::Warning);
  EXPECT_THAT(window_.alerts[0].buttonKeys, ElementsAre("OK"));
  EXPECT_THAT(log_.lines(), ElementsAre("Could not get volume name of disk with content! kelvanefs "
                                        "not mounted. Showing error."));
  EXPECT_TRUE(controller_.currentDeviceDictionary().has_value());
}

TEST_F(KVControllerMount, ADiscThatCannotBeRemountedFailsToOpen) {
  listSample();
  volumes_.addVisible(paths::volumesDirectory() + "/SAMPLE", "/dev/kv0s0");
  volumes_.lastStatus = 5;
  controller_.mountBurnFS();
  turnUntil([this] { return controller_.currentDevice() == nullptr; });
  EXPECT_THAT(log_.lines(), Contains("Remounting of disk with content failed! kelvanefs not "
                                     "mounted. Showing error."));
  EXPECT_TRUE(window_.has("alert Unmountfailed Unmountfailedlong"));
}

TEST_F(KVControllerMount, ADiscInWhosePlaceAnotherHasComeIsNotOpenedAndTheListIsMadeAnew) {
  listSample();
  volumes_.addVisible(paths::volumesDirectory() + "/SAMPLE", "/dev/kv0s0");
  device_.identity = "another disc";
  int scans = 0;
  services_.discsWillBeScanned = [&scans] { ++scans; };
  controller_.mountBurnFS();
  turnUntil([&scans] { return scans > 0; });
  EXPECT_THAT(log_.lines(), ElementsAre("kv0 holds another disc by now. Looking again."));
  EXPECT_THAT(volumes_.unmounted, IsEmpty()) << "the other disc was taken for the one listed";
  EXPECT_EQ(controller_.currentDevice(), nullptr);
  EXPECT_THAT(window_.calls, Contains("header headerDisksAvail"));
  EXPECT_TRUE(window_.alerts.empty());
}

TEST_F(KVControllerMount, WhoKeepsTheDiscFromBeingOpenedIsNamed) {
  listSample();
  const std::string volume = paths::volumesDirectory() + "/SAMPLE";
  fs::create_directories(volume);
  std::ofstream user(volume + "/used");
  volumes_.addVisible(volume, "/dev/kv0s0");
  volumes_.lastStatus = kUnmountBusy;
  controller_.mountBurnFS();
  turnUntil([this] { return controller_.currentDevice() == nullptr; });
  ASSERT_EQ(window_.alerts.size(), 1u);
  EXPECT_THAT(window_.alerts[0].detail, testing::HasSubstr(volume + "/used"));
}

TEST_F(KVControllerMount, OfABlankDiscTooTheDriveIsKeptFromOthers) {
  listSample("the disc", true);
  volumes_.onKeptFromOthers = [this] {
    // So that the volume of the disc is not mounted.
    fs::create_symlink(prefix_.path(), controller_.tmpDirPath());
  };
  controller_.mountBurnFS();
  turnUntil([this] { return controller_.currentDevice() == nullptr; });
  ASSERT_EQ(volumes_.keptFromOthers.size(), 1u) << "the drive's button would take the disc out";
  EXPECT_EQ(volumes_.keptFromOthers[0].first, &device_);
  EXPECT_THAT(volumes_.unmounted, IsEmpty());
}

class KVControllerMountMissingAScan : public KVControllerMount {
 protected:
  /// Opens the disc in vain; meanwhile the drives have news.
  void failToOpenAmidNews(const std::function<void()>& news) {
    listSample("the disc");
    device_.identity = "the disc";
    services_.discsWillBeScanned = [this] { ++scans_; };
    services_.discIsClosed = [](const std::string&) {};
    volumes_.onListing = [this, news] {
      news();
      controller_.scanForMedia();
    };
    devices_ = {};
    controller_.mountBurnFS();
    turnUntil([this] { return controller_.currentDevice() == nullptr; });
    turn();
  }

  int scans_ = 0;
};

TEST_F(KVControllerMountMissingAScan, ListsADiscThatHasComeInThePlaceOfOneThatFailedToOpen) {
  failToOpenAmidNews([this] { device_.identity = "another disc"; });
  EXPECT_EQ(scans_, 1);
}

TEST_F(KVControllerMountMissingAScan, ListsTheOtherDiscsOnceTheOneThatFailedToOpenHasGone) {
  failToOpenAmidNews([this] { device_.present = false; });
  EXPECT_EQ(scans_, 1);
}

TEST_F(KVControllerMountMissingAScan, DoesNotTryADiscAgainAndAgainThatFailsToOpen) {
  failToOpenAmidNews([] {});
  EXPECT_EQ(scans_, 0);
}

TEST_F(KVControllerMount, ADiscIsTakenFromItsOpeningUntilItHasGoneUnlessItsMountHasFailed) {
  EXPECT_FALSE(controller_.discIsTaken());
  controller_.setCurrentDevice(&device_);
  EXPECT_TRUE(controller_.discIsTaken());
  controller_.setMediaIsMounted(true);
  EXPECT_TRUE(controller_.discIsTaken());
  controller_.setMediaIsMounted(false);
  controller_.mountFailed();
  EXPECT_FALSE(controller_.discIsTaken());
}

TEST_F(KVControllerMount, AfterAMountThatFailedRequestsAreIgnoredUntilTheDiscHasGone) {
  listSample();
  controller_.setCurrentDevice(&device_);
  devices_ = {&device_};
  controller_.mountFailed();
  EXPECT_THAT(newCalls(), ElementsAre("will eject kv0")) << "what is mounted would hold the disc";
  EXPECT_THAT(volumes_.leftToOthers, ElementsAre(&device_)) << "so would a claim of the drive";
  controller_.mountBurnFS();
  controller_.performScanForMedia();
  EXPECT_THAT(newCalls(), IsEmpty());
  device_.present = false;
  controller_.performScanForMedia();
  EXPECT_EQ(controller_.currentDevice(), nullptr);
  EXPECT_THAT(newCalls(),
              testing::IsSupersetOf({"header headerDisksAvail", "closed kv0", "text insertdisk"}));
}

TEST_F(KVControllerMount, HoweverOftenAScanIsAskedForOneWaits) {
  int scans = 0;
  services_.discsWillBeScanned = [&scans] { ++scans; };
  controller_.scanForMedia();
  controller_.scanForMedia();
  turn();
  EXPECT_EQ(scans, 1);
  controller_.scanForMedia();
  turn();
  EXPECT_EQ(scans, 2);
}

TEST_F(KVControllerMount, AScanRunsOnTheMainThreadWhoeverAsksForIt) {
  std::thread::id scanned;
  services_.discsWillBeScanned = [&scanned] { scanned = std::this_thread::get_id(); };
  std::thread([this] { controller_.scanForMedia(); }).join();
  EXPECT_EQ(scanned, std::thread::id()) << "whoever asked had to wait for the scan";
  turn();
  EXPECT_EQ(scanned, std::this_thread::get_id());
}

TEST_F(KVControllerMount, AScanThatFindsALoadingDiscAloneHidesTheTableAndOpensNothing) {
  device_.present = false;
  device_.transitioning = true;
  devices_ = {&device_};
  controller_.performScanForMedia();
  EXPECT_THAT(newCalls(),
              ElementsAre("hide openButton", "hide diskTable", "show message", "text loadingdisk"));
  turn();
  EXPECT_THAT(newCalls(), IsEmpty());
  EXPECT_EQ(controller_.currentDevice(), nullptr);
}

TEST_F(KVControllerMount, ALinkAtTheOverlayDirectorysNameIsNotFollowed) {
  expectRefusalOfLinkAt([](const std::string& overlay) { return overlay; });
}

TEST_F(KVControllerMount, ALinkAtTheHideListsNameIsNotFollowed) {
  expectRefusalOfLinkAt([](const std::string& overlay) { return paths::hideListFile(overlay); });
}

TEST_F(KVControllerMount, ALinkAtTheImagesNameIsNotFollowed) {
  expectRefusalOfLinkAt([](const std::string& overlay) { return paths::burnImage(overlay); });
}

TEST_F(KVControllerMount, ALinkAtTheNameOfTheHiddenMountsFolderIsNotFollowed) {
  expectRefusalOfLinkAt([](const std::string&) { return paths::hiddenMountFolder(); });
}

TEST_F(KVControllerMount, ShowDiskRevealsTheVolume) {
  controller_.showDisk();
  EXPECT_THAT(newCalls(), ElementsAre("select " + paths::overlayMountPoint() + " below " +
                                      paths::volumesDirectory() + "/"));
}

TEST_F(KVControllerMount, AScanWithOneUsableDiscOpensItBehindItself) {
  devices_ = {&device_};
  volumes_.addVisible(paths::volumesDirectory() + "/SAMPLE", "/dev/kv0s0");
  volumes_.lastStatus = 5;  // It shall not get further than to the attempt.
  controller_.performScanForMedia();
  EXPECT_EQ(controller_.currentDevice(), nullptr) << "opened within the scan";
  turnUntil([this] { return !window_.alerts.empty(); });
  EXPECT_EQ(window_.mediaController().arrangedObjects().size(), 1u);
  EXPECT_TRUE(window_.has("hide diskScroll"));
  EXPECT_TRUE(window_.has("text insertdisk"));
  EXPECT_TRUE(window_.has("opened kv0"));
}

TEST_F(KVControllerMount, AScanKeepsTheSelectionThatStands) {
  NotingDevice second("kv1", window_);
  devices_ = {&device_, &second};
  volumes_.addVisible(paths::volumesDirectory() + "/ONE", "/dev/kv0s0");
  volumes_.addVisible(paths::volumesDirectory() + "/TWO", "/dev/kv1s0");
  controller_.performScanForMedia();
  EXPECT_EQ(window_.mediaController().selectionIndex(), 0u);
  window_.mediaController().setSelectionIndex(1);
  controller_.performScanForMedia();
  EXPECT_EQ(window_.mediaController().selectionIndex(), 1u);
  EXPECT_EQ(controller_.currentDevice(), nullptr) << "with two usable discs none is opened";
}

TEST_F(KVControllerMount, UnsupportedAndMissingRowsCannotBeSelected) {
  DeviceRecord loading;
  loading.unsupportedString = "";
  window_.mediaController().addObjects({DeviceRecord(), loading});
  EXPECT_TRUE(controller_.tableViewShouldSelectRow(0));
  EXPECT_FALSE(controller_.tableViewShouldSelectRow(1));
  EXPECT_FALSE(controller_.tableViewShouldSelectRow(2));
  EXPECT_FALSE(controller_.tableViewShouldSelectRow(-1));
}

}  // namespace
}  // namespace kelvane::test
