// SPDX-License-Identifier: GPL-2.0-or-later
// A session on a DVD, with scripts in the place of the programs.
#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>

#include "app/controller_fixture.h"
#include "burn/dvd_burn.h"
#include "burn/fake_bundle.h"
#include "platform/foundation/notification_center.h"
#include "platform/foundation/paths.h"

namespace kelvane::test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

namespace fs = std::filesystem;

class KVControllerDVD : public ControllerFixture {
 protected:
  void SetUp() override {
    overlay_ = paths::overlayDirectory(812);
    hideList_ = paths::hideListFile(overlay_);
    fs::create_directories(overlay_ + "/docs");
    std::ofstream(overlay_ + "/docs/a.txt") << "content";
    std::ofstream(hideList_) << "";
    fs::create_directories(paths::hiddenMountPoint());
    controller_.setTmpDirPath(overlay_);
    controller_.setCurrentDevice(&device_);
    setConsideredBlank(false);
    window_.setBurnConfirmationDiskTitle("NAME");
    device_.type = DRDeviceMediaTypeDVDPlusRW;
    bundle_.addProgram("growisofs", "echo growisofs \"$@\" >> \"$NOTES\"");
    bundle_.addProgram("df", "echo df \"$@\" >> \"$NOTES\"");
    newCalls();
  }

  void setConsideredBlank(bool blank) {
    DeviceRecord record;
    record.DRDevice = &device_;
    record.consideredBlank = blank;
    controller_.setCurrentDeviceDictionary(record);
  }

  void insertBlankDVDRW() {
    device_.type = DRDeviceMediaTypeDVDRW;
    device_.blank = true;
    setConsideredBlank(true);
  }

  /// Burns to the end; gives all that was done to the window and the drive until the clean-up is
  /// through. The scan that follows it may have run already.
  std::vector<std::string> burn() {
    controller_.burn();
    turnUntil([this] { return !controller_.burnInProgress(); });
    std::vector<std::string> calls = newCalls();
    const auto reply = std::find(calls.begin(), calls.end(), "reply yes");
    if (reply != calls.end()) calls.erase(reply + 1, calls.end());
    return withoutDelayedAnimation(std::move(calls));
  }

  std::string growisofsLine(const std::string& option) const {
    return "growisofs -overburn " + option + " /dev/rkv0 -hide-list " + hideList_ +
           " -hide-joliet-list " + hideList_ +
           " -joliet-long -D -J -r -input-charset utf-8 -use-the-force-luke=tty -V NAME " +
           overlay_ + "\n";
  }

  /// A script that says a line first, so that the error is the last line of its chunk.
  static std::string scriptSaying(const std::string& error) {
    return "printf 'first\\n%s\\n' '" + error + "' >&2";
  }

  void expectIdle() {
    EXPECT_EQ(controller_.currentDevice(), nullptr);
    EXPECT_FALSE(controller_.burnInProgress());
    EXPECT_FALSE(fs::exists(overlay_));
    EXPECT_FALSE(fs::exists(hideList_));
    EXPECT_FALSE(fs::exists(paths::hiddenMountFolder()));
  }

  std::string overlay_;
  std::string hideList_;
  kelvane::testing::FakeBundle bundle_;
};

TEST_F(KVControllerDVD, ASuccessfulBurnIsLoggedAndCleanedUpWithoutAnAlert) {
  EXPECT_THAT(burn(),
              ElementsAre("header burningdisk", "burnMessage burnpreparing", "duration 600 ms",
                          "mountedItem to left", "burn to in", "bar indeterminate",
                          "burnMessage burningchangesdvd", "bar stops", "caption buttonopen",
                          "will eject kv0", "eject", "closed kv0", "reply yes"));
  EXPECT_EQ(bundle_.notes(), growisofsLine("-M"));
  EXPECT_THAT(log_.lines(), ElementsAre("DVDBurn finished successfully!"));
  EXPECT_TRUE(window_.alerts.empty());
  expectIdle();
}

TEST_F(KVControllerDVD, TheBurnGoesOnWhileTheWindowStaysAlive) {
  bundle_.addProgram("growisofs", "while [ ! -e \"$NOTES\" ]; do sleep 0.01; done");
  controller_.burn();
  EXPECT_TRUE(controller_.burnInProgress());
  turn();
  EXPECT_TRUE(controller_.burnInProgress());
  EXPECT_TRUE(fs::exists(overlay_));
  std::ofstream(bundle_.notesPath()) << "go on";
  turnUntil([this] { return !controller_.burnInProgress(); });
  expectIdle();
}

TEST_F(KVControllerDVD, ADiscConsideredBlankGetsAFirstSessionAndItsHideListsToo) {
  setConsideredBlank(true);
  burn();
  EXPECT_EQ(bundle_.notes(), growisofsLine("-Z"));
}

TEST_F(KVControllerDVD, TheChosenSpeedIsAskedFor) {
  window_.speedTag = 4;
  burn();
  EXPECT_THAT(bundle_.notes(), HasSubstr("growisofs -speed=4 -overburn -M"));
}

TEST_F(KVControllerDVD, ADVDRGoesThisWayToo) {
  device_.type = DRDeviceMediaTypeDVDR;
  burn();
  EXPECT_EQ(bundle_.notes(), growisofsLine("-M"));
}

TEST_F(KVControllerDVD, ProgressMovesTheBarOverAllOfItsRange) {
  bundle_.addProgram("growisofs", "printf ' 42.17%% done, estimate finish\\n' >&2");
  const std::vector<std::string> calls = burn();
  EXPECT_THAT(calls, Contains("bar determinate"));
  EXPECT_THAT(calls, Contains("bar at 84/100"));
}

TEST_F(KVControllerDVD, ABlankDVDRWIsPreparedFirst) {
  insertBlankDVDRW();
  EXPECT_THAT(
      burn(),
      ElementsAre("header burningdisk", "burnMessage burnpreparing", "duration 600 ms",
                  "mountedItem to left", "burn to in", "bar indeterminate",
                  "burnMessage preparingemptydisk", "burnMessage burningchangesdvd", "bar stops",
                  "caption buttonopen", "will eject kv0", "eject", "closed kv0", "reply yes"));
  EXPECT_EQ(bundle_.notes(), "df -force /dev/kv0\n" + growisofsLine("-Z"));
  EXPECT_THAT(log_.lines(),
              ElementsAre("preparing finished with status: 0", "DVDBurn finished successfully!"));
}

TEST_F(KVControllerDVD, NoOtherDiscIsPrepared) {
  device_.blank = true;
  for (const char* type : {DRDeviceMediaTypeDVDPlusRW, DRDeviceMediaTypeDVDR}) {
    device_.type = type;
    controller_.setCurrentDevice(&device_);
    burn();
  }
  EXPECT_THAT(bundle_.notes(), Not(HasSubstr("df ")));
}

TEST_F(KVControllerDVD, ADVDRWThatIsOnlyConsideredBlankIsNotPrepared) {
  insertBlankDVDRW();
  device_.blank = false;
  burn();
  EXPECT_EQ(bundle_.notes(), growisofsLine("-Z"));
}

TEST_F(KVControllerDVD, WhatThePreparationEndsWithIsLoggedAndDecidesNothing) {
  insertBlankDVDRW();
  bundle_.addProgram("df", "echo ':-( nothing works' >&2; exit 3");
  burn();
  EXPECT_THAT(log_.lines(),
              ElementsAre("preparing finished with status: 3", "DVDBurn finished successfully!"));
}

TEST_F(KVControllerDVD, AFormatterThatIsMissingDecidesNothingEither) {
  insertBlankDVDRW();
  fs::remove(bundle_.libexec() + "/df");
  burn();
  EXPECT_THAT(log_.lines(),
              ElementsAre("preparing finished with status: 127", "DVDBurn finished successfully!"));
}

TEST_F(KVControllerDVD, TheEventLoopTurnsWhileTheDiscIsPrepared) {
  insertBlankDVDRW();
  bundle_.addProgram("df", "while [ ! -e \"$NOTES\" ]; do sleep 0.01; done");
  bool wasInProgress = false;
  performOnMainThread([&] {
    wasInProgress = controller_.burnInProgress();
    std::ofstream(bundle_.notesPath()) << "go on\n";
  });
  burn();
  EXPECT_TRUE(wasInProgress);
  EXPECT_EQ(bundle_.notes(), "go on\n" + growisofsLine("-Z"));
}

TEST_F(KVControllerDVD, APreparedDiscIsWaitedForInStepsOfATenthOfASecond) {
  insertBlankDVDRW();
  device_.transitioning = true;
  int sleeps = 0;
  services_.sleep = [&](std::chrono::milliseconds duration) {
    EXPECT_EQ(duration.count(), 100);
    device_.transitioning = ++sleeps < 300;  // Ready at the very last moment.
  };
  burn();
  EXPECT_EQ(sleeps, 300);
  EXPECT_THAT(bundle_.notes(), HasSubstr("growisofs"));
}

TEST_F(KVControllerDVD, APreparedDiscThatIsReadyAtOnceIsNotWaitedFor) {
  insertBlankDVDRW();
  int sleeps = 0;
  services_.sleep = [&](std::chrono::milliseconds) { ++sleeps; };
  burn();
  EXPECT_EQ(sleeps, 0);
}

TEST_F(KVControllerDVD, APreparedDiscThatNeverSettlesIsGivenUp) {
  insertBlankDVDRW();
  device_.transitioning = true;
  int sleeps = 0;
  services_.sleep = [&](std::chrono::milliseconds) { ++sleeps; };
  EXPECT_THAT(
      burn(),
      ElementsAre("header burningdisk", "burnMessage burnpreparing", "duration 600 ms",
                  "mountedItem to left", "burn to in", "bar indeterminate",
                  "burnMessage preparingemptydisk", "will eject kv0", "eject",
                  "alert DVDDeviceNotResponding DVDDeviceNotRespondingLong", "bar stops",
                  "caption buttonopen", "will eject kv0", "eject", "closed kv0", "reply yes"));
  EXPECT_EQ(sleeps, 300);
  EXPECT_EQ(window_.alerts.at(0).style, Alert::Style::Warning);
  EXPECT_THAT(window_.alerts.at(0).buttonKeys, ElementsAre("OK"));
  EXPECT_EQ(bundle_.notes(), "df -force /dev/kv0\n") << "growisofs never runs";
  expectIdle();
  // Its end is observed by nobody, so that a burn of somebody else's is none of ours.
  NotificationCenter::defaultCenter().post(kKelvaneDidFinishDVD, nullptr);
  turn();
  EXPECT_THAT(log_.lines(), ElementsAre("preparing finished with status: 0"));
}

TEST_F(KVControllerDVD, AnErrorIsLoggedAndShownAndTheDiscIsEjected) {
  bundle_.addProgram("growisofs", scriptSaying(":-( write failed: No space left on device"));
  EXPECT_THAT(burn(), ::testing::IsSupersetOf({"eject", "alert DVDBurnError DVDBurnErrorLong",
                                               "bar stops", "reply yes"}));
  EXPECT_THAT(log_.lines(), ElementsAre("burnerrors: (:-( write failed: No space left on device)",
                                        "growisofs: first",
                                        "growisofs: :-( write failed: No space left on device"));
  ASSERT_EQ(window_.alerts.size(), 1u);
  EXPECT_EQ(window_.alerts[0].style, Alert::Style::Warning);
  EXPECT_THAT(window_.alerts[0].buttonKeys, ElementsAre("OK"));
  EXPECT_EQ(window_.alerts[0].detail, "first\n:-( write failed: No space left on device");
  expectIdle();
}

TEST_F(KVControllerDVD, TheDiscIsEjectedBeforeTheAlertAndAgainByTheCleanUp) {
  bundle_.addProgram("growisofs", scriptSaying(":-( bad"));
  std::vector<std::string> calls = burn();
  calls.erase(calls.begin(),
              std::find(calls.begin(), calls.end(), "burnMessage burningchangesdvd") + 1);
  std::erase(calls, "bar indeterminate");  // The error line tells no progress.
  std::erase(calls, "bar animates");
  EXPECT_THAT(calls, ElementsAre("will eject kv0", "eject", "alert DVDBurnError DVDBurnErrorLong",
                                 "bar stops", "caption buttonopen", "will eject kv0", "eject",
                                 "closed kv0", "reply yes"));
}

TEST_F(KVControllerDVD, TwoErrorsAreKnownByTheirExactText) {
  const std::pair<std::string, std::string> cases[] = {
      {":-( FORMAT allocaion length isn'\\''t sane", "DVDBurnErrorAllocLong"},
      {":-( FORMAT allocation length isn'\\''t sane", "DVDBurnErrorLong"},
      {":-( next session would cross 4GB boundary, aborting...", "DVDBurnErrorFull"},
      {":-( next session would cross 4GB boundary", "DVDBurnErrorLong"}};
  for (const auto& [error, informativeKey] : cases) {
    SetUp();
    bundle_.addProgram("growisofs", scriptSaying(error));
    burn();
    ASSERT_FALSE(window_.alerts.empty());
    EXPECT_EQ(window_.alerts.back().informativeKey, informativeKey) << error;
  }
}

TEST_F(KVControllerDVD, AKnownErrorThatBeginsItsChunkIsNotKnownForItsLineFeed) {
  bundle_.addProgram("growisofs",
                     "echo ':-( next session would cross 4GB boundary, aborting...' >&2");
  burn();
  EXPECT_EQ(window_.alerts.at(0).informativeKey, "DVDBurnErrorLong");
}

TEST_F(KVControllerDVD, TheLastOfSeveralErrorsDecides) {
  bundle_.addProgram("growisofs",
                     scriptSaying(":-( first") +
                         "\nwhile [ ! -e \"$NOTES\" ]; do sleep 0.01; done\n" +
                         scriptSaying(":-( next session would cross 4GB boundary, aborting..."));
  controller_.burn();
  turnUntil([this] { return window_.has("bar animates"); });  // The first has been read.
  std::ofstream(bundle_.notesPath()) << "go on";
  turnUntil([this] { return !controller_.burnInProgress(); });
  EXPECT_THAT(log_.lines(), Contains("burnerrors: (:-( first, :-( next session would cross 4GB "
                                     "boundary, aborting...)"));
  EXPECT_EQ(window_.alerts.at(0).informativeKey, "DVDBurnErrorFull");
}

TEST_F(KVControllerDVD, AFailureWithoutAnErrorLineCountsAsSuccessAndItsWordsAreToldAndLogged) {
  bundle_.addProgram("growisofs",
                     "echo 'Permission denied. File x is not readable - ignoring' >&2\n"
                     "echo ':-[ WRITE@LBA=10h failed' >&2; exit 1");
  burn();
  EXPECT_THAT(log_.lines(),
              ElementsAre("DVDBurn finished successfully!",
                          "growisofs: Permission denied. File x is not readable - ignoring",
                          "growisofs: :-[ WRITE@LBA=10h failed"));
  EXPECT_THAT(window_.burnEnds, ElementsAre(BurnEnd::Succeeded));
  ASSERT_EQ(window_.alerts.size(), 1u);
  EXPECT_EQ(window_.alerts[0].messageKey, "DVDBurnedDoubtfully");
  EXPECT_EQ(window_.alerts[0].informativeKey, "DVDBurnedDoubtfullyLong");
  EXPECT_EQ(window_.alerts[0].detail,
            "ReasonFileNotReadable\nPermission denied. File x is not readable - ignoring\n"
            ":-[ WRITE@LBA=10h failed");
}

TEST_F(KVControllerDVD, WordsThatMeanNoHarmAreOnlyLogged) {
  bundle_.addProgram("growisofs", "echo 'something new that it says' >&2");
  burn();
  EXPECT_THAT(log_.lines(), ElementsAre("DVDBurn finished successfully!",
                                        "growisofs: something new that it says"));
  EXPECT_TRUE(window_.alerts.empty());
}

// The file or limit in question stands in another line than the error does.
TEST_F(KVControllerDVD, TheUserIsToldTheWordsOfTheImageBuilderToo) {
  bundle_.addProgram("growisofs",
                     "printf 'Rock Ridge signatures found\\nFile x is larger than 4GiB-1.\\n"
                     ":-( mkisofs has failed: 1\\n' >&2");
  burn();
  EXPECT_EQ(window_.alerts.at(0).detail,
            "ReasonFileTooLarge\nFile x is larger than 4GiB-1.\n:-( mkisofs has failed: 1");
}

TEST_F(KVControllerDVD, AfterAFailureTheChangesAreDeleted) {
  bundle_.addProgram("growisofs", scriptSaying(":-( bad"));
  burn();
  expectIdle();
  EXPECT_TRUE(fs::is_empty(prefix_.path() + "/tmp"));
}

TEST_F(KVControllerDVD, TheNextBurnIsReportedByItself) {
  bundle_.addProgram("growisofs", scriptSaying(":-( bad"));
  burn();
  SetUp();
  burn();
  EXPECT_EQ(window_.alerts.size(), 1u);
  EXPECT_EQ(log_.lines().back(), "DVDBurn finished successfully!");
}

class KVControllerDVDRefusal : public KVControllerDVD {
 protected:
  /// Nothing is prepared or written, the changes are kept, and the user is told why and where.
  void expectRefusal(const std::string& why) {
    insertBlankDVDRW();
    burn();
    EXPECT_EQ(bundle_.notes(), "");
    ASSERT_EQ(window_.alerts.size(), 1u);
    EXPECT_EQ(window_.alerts[0].messageKey, "DVDBurnError");
    EXPECT_EQ(window_.alerts[0].informativeKey, "SessionNotPreparedLong");
    EXPECT_THAT(window_.alerts[0].detail, HasSubstr(why));
    EXPECT_EQ(controller_.currentDevice(), nullptr);
  }

  void expectThatChangesAreKept() {
    std::ifstream file(overlay_ + ".kept/docs/a.txt");
    EXPECT_TRUE(file.good());
    EXPECT_THAT(window_.alerts.at(0).detail, HasSubstr("kept in " + overlay_ + ".kept."));
  }
};

TEST_F(KVControllerDVDRefusal, WithoutTheHideListNothingIsBurnedAndTheChangesAreKept) {
  fs::remove(hideList_);
  expectRefusal("could not be written");
  expectThatChangesAreKept();
}

TEST_F(KVControllerDVDRefusal, ALinkAtTheHideListsNameIsNotReadAndTheChangesAreKept) {
  fs::remove(hideList_);
  fs::create_symlink("/dev/null", hideList_);
  expectRefusal(hideList_ + " is somebody else's");
  expectThatChangesAreKept();
}

TEST_F(KVControllerDVDRefusal, AnOverlayDirectoryThatWasReplacedByALinkIsNotBurned) {
  fs::rename(overlay_, prefix_.path() + "/victim");
  fs::create_symlink(prefix_.path() + "/victim", overlay_);
  expectRefusal(overlay_ + " is somebody else's");
  EXPECT_TRUE(fs::exists(prefix_.path() + "/victim/docs/a.txt"));
}

}  // namespace
}  // namespace kelvane::test
