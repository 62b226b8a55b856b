// SPDX-License-Identifier: GPL-2.0-or-later
// A session on a CD, with scripts in the place of the image builder and of the recorder.
#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>

#include "app/controller_fixture.h"
#include "burn/fake_bundle.h"
#include "platform/foundation/paths.h"
#include "platform/recording/dr_burn_status.h"
#include "platform/recording/dr_notification_center.h"
#include "platform/recording/drive.h"
#include "platform/volumes/unmount.h"
#include "recording/scripted_transport.h"

namespace kelvane::test {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

namespace fs = std::filesystem;

/// Notes the unmounting of the disc among the calls of window and drive.
class NotingVolumeServices : public FakeVolumeServices {
 public:
  explicit NotingVolumeServices(RecordingOutlets& window) : window_(window) {}
  int unmountVolumeSync(const std::string& volume) override {
    window_.note("unmount");
    return FakeVolumeServices::unmountVolumeSync(volume);
  }

 private:
  RecordingOutlets& window_;
};

/// May refuse to be taken.
class GuardedDevice : public NotingDevice {
 public:
  using NotingDevice::NotingDevice;
  bool acquireExclusiveAccess() override { return NotingDevice::acquireExclusiveAccess() && free; }
  bool free = true;
};

class KVControllerCD : public ControllerFixture {
 protected:
  void SetUp() override {
    services_.volumes = &notingVolumes_;
    notingVolumes_.table[paths::hiddenMountPoint()] = {};
    overlay_ = paths::overlayDirectory(812);
    image_ = paths::burnImage(overlay_);
    hideList_ = paths::hideListFile(overlay_);
    burner_.recordingDrive = &drive_;
    burner_.setTracks({0, 11702});
    controller_.initialiseDR();
    bundle_.addProgram("mkisofs", kBuildsImage);
    bundle_.addProgram("recorder", kNotes + recorderSaying({R"({"state":"done"})"}));
    openDisc();
  }

  // The drive goes before the controller.
  void TearDown() override { controller_.setCurrentDevice(nullptr); }

  /// As it is when the burn is confirmed. Each burn ends with the disc given up.
  void openDisc() {
    fs::create_directories(overlay_);
    std::ofstream(overlay_ + "/a.txt") << "content";
    std::ofstream(hideList_) << "";
    controller_.setTmpDirPath(overlay_);
    controller_.setSizetoburn(4096);
    controller_.setCurrentDevice(&burner_);
    DeviceRecord record;
    record.DRDevice = &burner_;
    controller_.setCurrentDeviceDictionary(record);
    window_.setBurnConfirmationDiskTitle("NAME");
    newCalls();
  }

  static std::string recorderSaying(const std::vector<std::string>& reports) {
    std::string script;
    for (const std::string& report : reports) script += "echo '" + report + "'\n";
    return script;
  }

  /// Burns to the end; gives what was done until the clean-up is through. The image builder's bar
  /// moves whenever its timer finds the image grown, and is left out.
  std::vector<std::string> burn() {
    controller_.burn();
    turnUntil([this] { return !controller_.burnInProgress(); });
    std::vector<std::string> calls = newCalls();
    const auto reply = std::find(calls.begin(), calls.end(), "reply yes");
    if (reply != calls.end()) calls.erase(reply + 1, calls.end());
    const auto imaged = std::find(calls.begin(), calls.end(), "acquire");
    calls.erase(std::remove_if(calls.begin(), imaged,
                               [](const std::string& call) {
                                 return call == "bar determinate" || call.starts_with("bar at");
                               }),
                imaged);
    return withoutDelayedAnimation(std::move(calls));
  }

  void expectIdle() {
    EXPECT_EQ(controller_.currentDevice(), nullptr);
    EXPECT_FALSE(controller_.burnInProgress());
    EXPECT_FALSE(fs::exists(overlay_));
    EXPECT_FALSE(fs::exists(hideList_));
  }

  /// A status of a burn, as it comes from the drive's side.
  std::vector<std::string> callsAfter(std::optional<double> percentComplete) {
    DRBurnStatus status;
    status.DRStatusStateKey = DRStatusStateTrackWrite;
    status.DRStatusPercentCompleteKey = percentComplete;
    DRNotificationCenter::currentRunLoopCenter().post(DRBurnStatusChangedNotification, nullptr,
                                                      status);
    turn();
    return newCalls();
  }

  static DriveIdentity recordingIdentity() {
    DriveIdentity identity;
    identity.bsdName = "kv0";
    identity.programPath = "/dev/kv0";
    return identity;
  }

  static constexpr char kBuildsImage[] =
      "echo mkisofs \"$@\" >> \"$NOTES\"\n"
      "while [ \"$1\" != -o ]; do shift; done\n"
      "head -c 4096 /dev/zero > \"$2\"";
  const std::string kNotes = "echo recorder \"$@\" >> \"$NOTES\"\n";

  NotingVolumeServices notingVolumes_{window_};
  Drive drive_{recordingIdentity(), std::make_unique<kelvane::testing::ScriptedTransport>()};
  GuardedDevice burner_{"kv0", window_};
  kelvane::testing::FakeBundle bundle_;
  std::string overlay_;
  std::string image_;
  std::string hideList_;
};

TEST_F(KVControllerCD, ASessionIsBuiltThenWrittenInThisOrder) {
  bundle_.addProgram(
      "recorder",
      kNotes + recorderSaying({R"({"state":"preparing"})",
                               R"({"state":"writing","written":150,"total":300})",
                               R"({"state":"closing"})", R"({"state":"done","total":300})"}));
  EXPECT_THAT(
      burn(),
      ElementsAre("header burningdisk", "burnMessage burnpreparing", "duration 600 ms",
                  "mountedItem to left", "burn to in", "bar indeterminate", "unmount",
                  "burnMessage preparingdata", "acquire", "burnMessage burningchangescd",
                  // Before the recorder, and from it, nothing is written yet.
                  "bar indeterminate", "bar animates", "bar indeterminate", "bar animates",
                  // The burn fills the second half of the bar.
                  "bar determinate", "bar at 150/100", "bar determinate", "bar at 200/100",
                  "bar determinate", "bar at 200/100", "release", "bar stops", "caption buttonopen",
                  "will eject kv0", "eject", "closed kv0", "reply yes"));
  EXPECT_THAT(log_.lines(), ElementsAre("devicename used:kv0", "cd imaging finished successfully.",
                                        "cd burn finished with state: DRStatusStateDone"));
  EXPECT_EQ(bundle_.notes(), "mkisofs -hide-list " + hideList_ + " -hide-joliet-list " + hideList_ +
                                 " -quiet -D -r -J -joliet-long -input-charset utf-8 -V NAME -o " +
                                 image_ + " -M kv0 -C 0,11702 " + overlay_ + "\nrecorder --image " +
                                 image_ + " --appendable --device /dev/kv0\n");
  EXPECT_TRUE(window_.alerts.empty());
  EXPECT_FALSE(fs::exists(image_));
  expectIdle();
}

TEST_F(KVControllerCD, AFirstSessionIsBuiltWithoutAnOldOne) {
  burner_.setTracks({0});
  EXPECT_THAT(burn(), Not(Contains("unmount")));
  EXPECT_THAT(bundle_.notes(),
              HasSubstr("mkisofs -quiet -D -r -J -joliet-long -input-charset utf-8 -V NAME -o " +
                        image_ + " " + overlay_ + "\n"));
}

TEST_F(KVControllerCD, TheChosenSpeedIsAskedForAndOthersAreLeftToTheDrive) {
  const std::pair<int32_t, std::string> cases[] = {{1, "--appendable --speed 176.399994"},
                                                   {2, "--appendable --speed 352.799988"}};
  for (const auto& [tag, arguments] : cases) {
    openDisc();
    window_.speedTag = tag;
    burn();
    EXPECT_THAT(bundle_.notes(), HasSubstr(arguments));
  }
  fs::remove(bundle_.notesPath());
  openDisc();
  window_.speedTag = 3;
  burn();
  EXPECT_THAT(bundle_.notes(), Not(HasSubstr("--speed")));
}

TEST_F(KVControllerCD, TheImageFillsTheFirstHalfOfTheBar) {
  bundle_.addProgram("mkisofs",
                     "while [ \"$1\" != -o ]; do shift; done\n"
                     "head -c 2048 /dev/zero > \"$2\"\n"
                     "while [ ! -e \"$NOTES\" ]; do sleep 0.01; done");
  bool reachedHalf = false;
  window_.onCall = [&](const std::string& call) {
    if (call != "bar at 50/100") return;
    reachedHalf = true;
    std::ofstream(bundle_.notesPath()) << "go on";
  };
  burn();
  EXPECT_TRUE(reachedHalf);
}

TEST_F(KVControllerCD, OnlyWhatTheImageBuilderSaysDecides) {
  bundle_.addProgram("mkisofs", std::string(kBuildsImage) + "\nexit 1");
  burn();
  EXPECT_THAT(log_.lines(), Contains("cd imaging finished successfully."));
  EXPECT_TRUE(window_.alerts.empty());
}

TEST_F(KVControllerCD, WordsOfTheImageBuilderAreAFailureAndTheImageStays) {
  bundle_.addProgram("mkisofs",
                     std::string(kBuildsImage) + "\necho 'Rock Ridge signatures found, so?' >&2");
  EXPECT_THAT(burn(),
              ElementsAre("header burningdisk", "burnMessage burnpreparing", "duration 600 ms",
                          "mountedItem to left", "burn to in", "bar indeterminate", "unmount",
                          "burnMessage preparingdata", "bar stops",
                          "alert CreateTrackAbortedWithError CreateTrackAbortedWithErrorLong",
                          "will eject kv0", "eject", "bar stops", "caption buttonopen",
                          "will eject kv0", "eject", "closed kv0", "reply yes"));
  EXPECT_THAT(
      log_.lines(),
      ElementsAre("devicename used:kv0",
                  "CD imaging failed with error! Error: Rock Ridge signatures found, so?\\n"));
  EXPECT_EQ(window_.alerts.at(0).style, Alert::Style::Warning);
  EXPECT_THAT(window_.alerts.at(0).buttonKeys, ElementsAre("OK"));
  EXPECT_THAT(bundle_.notes(), Not(HasSubstr("recorder")));
  EXPECT_TRUE(fs::exists(image_));
  expectIdle();
}

TEST_F(KVControllerCD, TheOneLineThatSaysNothingWrongIsNoFailure) {
  bundle_.addProgram("mkisofs",
                     std::string(kBuildsImage) + "\necho 'Rock Ridge signatures found' >&2");
  burn();
  EXPECT_THAT(bundle_.notes(), HasSubstr("recorder"));
  EXPECT_TRUE(window_.alerts.empty());
}

TEST_F(KVControllerCD, TheDesktopIsNotToInterruptUntilTheBurnHasEnded) {
  EXPECT_EQ(awake_.use_count(), 1);
  window_.onCall = [this](const std::string& call) {
    if (call == "acquire" || call == "release") {
      EXPECT_EQ(awake_.use_count(), 2) << call;
    }
  };
  burn();
  EXPECT_THAT(reasonsToStayAwake_, ElementsAre("burningdisk"));
  EXPECT_EQ(awake_.use_count(), 1);
  EXPECT_THAT(window_.burnEnds, ElementsAre(BurnEnd::Succeeded));
}

TEST_F(KVControllerCD, ABurnThatFailsAtTheDriveIsToldAsFailed) {
  bundle_.addProgram("recorder", recorderSaying({R"({"state":"failed","error":"no laser"})"}));
  burn();
  EXPECT_THAT(window_.burnEnds, ElementsAre(BurnEnd::Failed));
  EXPECT_EQ(awake_.use_count(), 1);
}

TEST_F(KVControllerCD, ABurnWithoutAnImageIsToldAsFailed) {
  bundle_.addProgram("mkisofs", "echo 'no room' >&2");
  burn();
  EXPECT_THAT(window_.burnEnds, ElementsAre(BurnEnd::Failed));
  EXPECT_EQ(awake_.use_count(), 1);
}

TEST_F(KVControllerCD, ADriveThatSomebodyElseHoldsIsBurnedAllTheSame) {
  burner_.free = false;
  burn();
  EXPECT_THAT(log_.lines(),
              ElementsAre("devicename used:kv0",
                          "WARNING! Exclusive access to burning device denied after CD imaging! "
                          "Burn is likely to fail!",
                          "cd imaging finished successfully.",
                          "cd burn finished with state: DRStatusStateDone"));
}

TEST_F(KVControllerCD, TheMediumIsWaitedForInStepsOfATenthOfASecond) {
  burner_.transitioning = true;
  std::string notesMeanwhile;
  int sleeps = 0;
  services_.sleep = [&](std::chrono::milliseconds duration) {
    EXPECT_EQ(duration.count(), 100);
    EXPECT_TRUE(window_.has("burnMessage burningchangescd"));
    notesMeanwhile += bundle_.notes().substr(0, bundle_.notes().find(' ')) + " ";
    burner_.transitioning = ++sleeps < 3;
  };
  burn();
  EXPECT_EQ(sleeps, 3);
  EXPECT_EQ(notesMeanwhile, "mkisofs mkisofs mkisofs ");
  EXPECT_THAT(bundle_.notes(), HasSubstr("recorder"));
}

TEST_F(KVControllerCD, AMediumThatHasSettledIsNotWaitedFor) {
  services_.sleep = [](std::chrono::milliseconds) { ADD_FAILURE() << "waited for nothing"; };
  burn();
}

TEST_F(KVControllerCD, AFailedBurnIsLoggedAndShownOnceTheImageAndTheDriveAreLetGo) {
  bundle_.addProgram("recorder", recorderSaying({R"({"state":"failed","error":"no laser"})"}));
  std::vector<std::string> imageMeanwhile;
  window_.onCall = [&](const std::string& call) {
    if (call == "acquire" || call == "release") {
      imageMeanwhile.push_back(call + (fs::exists(image_) ? " with image" : " without image"));
    }
  };
  std::vector<std::string> calls = burn();
  calls.erase(calls.begin(), std::find(calls.begin(), calls.end(), "release"));
  EXPECT_THAT(calls, ElementsAre("release", "alert CDBurnError CDBurnErrorLong", "bar stops",
                                 "caption buttonopen", "will eject kv0", "eject", "closed kv0",
                                 "reply yes"));
  EXPECT_THAT(imageMeanwhile, ElementsAre("acquire with image", "release without image"));
  EXPECT_THAT(log_.lines(), ElementsAre("devicename used:kv0", "cd imaging finished successfully.",
                                        "cd burn finished with state: DRStatusStateFailed",
                                        "CD burning failed: no laser"));
  ASSERT_EQ(window_.alerts.size(), 1u);
  EXPECT_EQ(window_.alerts[0].style, Alert::Style::Warning);
  EXPECT_EQ(window_.alerts[0].detail, "no laser");
  expectIdle();
}

class KVControllerCDRefusal : public KVControllerCD {
 protected:
  /// The burn has not begun, and what was changed is where the user is told.
  void expectRefusal(const std::string& messageKey) {
    EXPECT_THAT(bundle_.notes(), Not(HasSubstr("recorder")));
    ASSERT_EQ(window_.alerts.size(), 1u);
    EXPECT_EQ(window_.alerts[0].messageKey, messageKey);
    EXPECT_EQ(window_.alerts[0].informativeKey, messageKey + "Long");
    EXPECT_THAT(window_.alerts[0].detail,
                HasSubstr("Your changes are kept in " + overlay_ + ".kept."));
    EXPECT_TRUE(fs::exists(overlay_ + ".kept/a.txt"));
    EXPECT_FALSE(fs::exists(image_));
    EXPECT_EQ(controller_.currentDevice(), nullptr);
    EXPECT_FALSE(controller_.burnInProgress());
  }

  void openDiscWithIdentity(const std::string& identity) {
    DeviceRecord record = *controller_.currentDeviceDictionary();
    record.mediaIdentity = identity;
    controller_.setCurrentDeviceDictionary(record);
  }
};

TEST_F(KVControllerCDRefusal, ADriveThatDoesNotSayWhereTheNextSessionBeginsIsNotWrittenOn) {
  burner_.deviceStatus = {};
  EXPECT_THAT(burn(), Contains("unmount"));
  ASSERT_EQ(window_.alerts.size(), 1u);
  EXPECT_EQ(window_.alerts[0].messageKey, "CreateTrackAbortedWithError");
  EXPECT_EQ(window_.alerts[0].informativeKey, "SessionNotPreparedLong");
  EXPECT_THAT(window_.alerts[0].detail,
              AllOf(HasSubstr("ReasonNoNextSession"), HasSubstr(overlay_ + ".kept.")));
  EXPECT_THAT(log_.lines(),
              Contains("CD imaging refused. The drive does not say where the next session may "
                       "begin."));
  EXPECT_TRUE(fs::exists(overlay_ + ".kept/a.txt"));
  EXPECT_THAT(bundle_.notes(), Not(HasSubstr("mkisofs")));
  EXPECT_EQ(controller_.currentDevice(), nullptr);
  EXPECT_FALSE(controller_.burnInProgress());
}

TEST_F(KVControllerCDRefusal, AnotherDiscThanTheOneThatWasOpenedIsNotWrittenTo) {
  openDiscWithIdentity("the disc");
  burner_.identity = "another disc";
  burn();
  expectRefusal("BurnDiscChanged");
  EXPECT_THAT(bundle_.notes(), Not(HasSubstr("mkisofs")));
}

TEST_F(KVControllerCDRefusal, ADiscThatCannotBeToldIsTakenForTheOneThatWasOpened) {
  openDiscWithIdentity("the disc");
  burn();
  EXPECT_THAT(bundle_.notes(), HasSubstr("recorder"));
  EXPECT_TRUE(window_.alerts.empty());
}

TEST_F(KVControllerCDRefusal, ADiscThatTheDesktopHasMountedAndSomebodyUsesIsNotBurned) {
  notingVolumes_.addVisible("/run/media/ann/DISC", "/dev/kv0");
  notingVolumes_.lastStatus = kUnmountBusy;
  burn();
  expectRefusal("BurnDiscInUse");
  EXPECT_THAT(bundle_.notes(), Not(HasSubstr("mkisofs")));
}

TEST_F(KVControllerCDRefusal, NorOneThatIsMountedWhileTheImageIsBuilt) {
  window_.onCall = [this](const std::string& call) {
    if (call != "burnMessage preparingdata") return;
    notingVolumes_.addVisible("/run/media/ann/DISC", "/dev/kv0");
    notingVolumes_.lastStatus = kUnmountBusy;
  };
  EXPECT_THAT(burn(), Not(Contains("acquire")));
  expectRefusal("BurnDiscInUse");
  EXPECT_THAT(bundle_.notes(), HasSubstr("mkisofs"));
}

TEST_F(KVControllerCD, TheBarTellsNothingUntilThereIsSomethingToTell) {
  for (const std::optional<double> nothing :
       {std::optional<double>(), std::optional(0.0), std::optional(-0.5)}) {
    EXPECT_THAT(callsAfter(nothing), ElementsAre("bar indeterminate", "bar animates"));
  }
  EXPECT_THAT(callsAfter(0.5), ElementsAre("bar determinate", "bar at 150/100"));
  EXPECT_THAT(callsAfter(1.0), ElementsAre("bar determinate", "bar at 200/100"));
}

}  // namespace
}  // namespace kelvane::test
