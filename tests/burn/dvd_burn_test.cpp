// SPDX-License-Identifier: GPL-2.0-or-later
// A burn from its start to its end, with scripts in the place of growisofs.
#include "burn/dvd_burn.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>

#include "burn/fake_bundle.h"
#include "burn/noted_bar.h"
#include "media/fake_volume_services.h"
#include "platform/foundation/main_thread.h"
#include "platform/foundation/notification_center.h"
#include "recording/event_loop.h"
#include "volumes/fake_device.h"

namespace kelvane {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr char kFull[] = ":-( next session would cross 4GB boundary, aborting...";

class DVDBurnTest : public ::testing::Test {
 protected:
  DVDBurnTest() {
    NotificationCenter::defaultCenter().addObserver(this, kKelvaneDidFinishDVD, nullptr,
                                                    [this](const Notification& notification) {
                                                      sender = notification.object;
                                                      wasMainThread = isMainThread();
                                                      finished = true;
                                                    });
  }
  ~DVDBurnTest() override { NotificationCenter::defaultCenter().removeObserver(this); }

  DVDBurnParameters parameters() {
    DVDBurnParameters all;
    all.dvdvolumename = "NAME";
    all.bsddevicepath = "/dev/rkv0";
    all.sourcepath = "/tmp/812";
    all.burntoemptydisk = "NO";
    all.overburn = "NO";
    all.progressIndicator = &bar;
    all.currentDevice = &device;
    all.hideFilePath = "/tmp/.812.hide";
    return all;
  }

  /// Runs the burn to its end with this script as growisofs.
  void run(const std::string& script) {
    bundle.addProgram("growisofs", script);
    burn.startDVDBurnInOwnThread();
    ASSERT_TRUE(loop.runUntil([this] { return finished.load(); }));
    loop.deliverQueued();
  }

  testing::EventLoop loop;
  testing::FakeBundle bundle;
  testing::NotedBar bar;
  test::FakeDevice device{"kv0"};
  test::FakeVolumeServices services;
  std::atomic<bool> finished = false;
  const void* sender = nullptr;
  bool wasMainThread = true;
  DVDBurn burn{parameters(), services};
};

TEST_F(DVDBurnTest, TheEndIsPostedByTheBurnOnItsOwnThread) {
  run("exit 0");
  EXPECT_EQ(sender, &burn);
  EXPECT_FALSE(wasMainThread);
}

constexpr char kRemounted[] = ":-( unable to O_EXCL /dev/sr0: someone was in time to remount?";

TEST_F(DVDBurnTest, OthersAreKeptFromMountingBeforeGrowisofsStarts) {
  run("exit 0");
  ASSERT_EQ(services.keptFromOthers.size(), 1U);
  EXPECT_EQ(services.keptFromOthers.front().first, &device);
}

TEST_F(DVDBurnTest, GrowisofsIsStartedAgainWhereADesktopWasFasterWithItsMount) {
  run("echo started >> \"$NOTES\"\n"
      "[ $(wc -l < \"$NOTES\") -gt 2 ] || echo '" +
      std::string(kRemounted) + "' >&2");
  EXPECT_EQ(bundle.notes(), "started\nstarted\nstarted\n");
  EXPECT_THAT(burn.burnErrors(), IsEmpty());
  EXPECT_THAT(burn.remarks().lines(), IsEmpty());
  EXPECT_EQ(services.keptFromOthers.size(), 3U) << "what was mounted is unmounted each time";
}

TEST_F(DVDBurnTest, WhoeverMountsTheDiscAgainAndAgainIsGivenWayInTheEnd) {
  run("echo started >> \"$NOTES\"\n"
      "echo ':-( unable to umount /dev/sr0: Device or resource busy' >&2");
  EXPECT_EQ(bundle.notes(), "started\nstarted\nstarted\nstarted\nstarted\n");
  EXPECT_THAT(burn.burnErrors(), ElementsAre(HasSubstr("unable to umount /dev/sr0")));
}

TEST_F(DVDBurnTest, AnyOtherErrorIsTheEnd) {
  run("echo started >> \"$NOTES\"\n"
      "echo '" +
      std::string(kFull) + "' >&2");
  EXPECT_EQ(bundle.notes(), "started\n");
  EXPECT_THAT(burn.burnErrors(), ElementsAre(HasSubstr("4GB boundary")));
}

TEST_F(DVDBurnTest, ARunWithoutAWordEndsAsSuccess) {
  run("exit 0");
  EXPECT_THAT(burn.burnErrors(), IsEmpty());
  EXPECT_THAT(bar.values, IsEmpty());
}

TEST_F(DVDBurnTest, TheExitStatusIsNotConsulted) {
  run("exit 1");
  EXPECT_THAT(burn.burnErrors(), IsEmpty());
}

TEST_F(DVDBurnTest, AnEndByASignalIsNotConsultedEither) {
  run("kill -KILL $$");
  EXPECT_THAT(burn.burnErrors(), IsEmpty());
}

TEST_F(DVDBurnTest, AnErrorIsRecordedThoughTheExitStatusIsZero) {
  run("printf 'about to write\\n:-( write failed: No space left on device\\n' >&2; exit 0");
  EXPECT_THAT(burn.burnErrors(), ElementsAre(":-( write failed: No space left on device"));
}

TEST_F(DVDBurnTest, ProgressReachesTheBarOnTheMainThread) {
  run("printf ' 42.17%% done, estimate finish Sat Nov 21\\n' >&2");
  EXPECT_FALSE(bar.isIndeterminate);
  EXPECT_THAT(bar.values, ElementsAre(0.84));
}

TEST_F(DVDBurnTest, StandardOutputIsReadByNobodyAndHoldsNothingUp) {
  run("head -c 1000000 /dev/zero; echo ':-( on the wrong stream'; echo done >> \"$NOTES\"");
  EXPECT_EQ(bundle.notes(), "done\n");
  EXPECT_THAT(burn.burnErrors(), IsEmpty());
}

// As many messages as a burn can have, at once: none is lost, and none is read with another.
TEST_F(DVDBurnTest, EveryMessageIsReadByItselfHoweverFastTheyCome) {
  run("i=0; while [ $i -lt 99 ]; do echo \":-( error $i\"; echo line; i=$((i + 1)); done >&2");
  ASSERT_EQ(burn.burnErrors().size(), 99u);
  EXPECT_EQ(burn.burnErrors().back(), ":-( error 98\n");
}

TEST_F(DVDBurnTest, GrowisofsIsToldWhereOurImageBuilderIsAndKeepsTheEnvironment) {
  bundle.addProgram("mkisofs", "");
  setenv("DVD_BURN_TEST", "inherited", 1);
  run("echo \"$MKISOFS $DVD_BURN_TEST\" > \"$NOTES\"");
  unsetenv("DVD_BURN_TEST");
  EXPECT_EQ(bundle.notes(), bundle.libexec() + "/mkisofs inherited\n");
}

TEST_F(DVDBurnTest, GrowisofsGetsTheArgumentsInTheirOrder) {
  run("for word in \"$@\"; do echo \"$word\"; done > \"$NOTES\"");
  EXPECT_EQ(bundle.notes(),
            "-overburn\n-M\n/dev/rkv0\n-hide-list\n/tmp/.812.hide\n-hide-joliet-list\n"
            "/tmp/.812.hide\n-joliet-long\n-D\n-J\n-r\n-input-charset\nutf-8\n"
            "-use-the-force-luke=tty\n-V\nNAME\n/tmp/812\n");
}

// A terminal's Ctrl-C goes to every process of its session.
TEST_F(DVDBurnTest, GrowisofsHasASessionOfItsOwn) {
  run("cut -d' ' -f6 /proc/$$/stat > \"$NOTES\"; echo $$ >> \"$NOTES\"");
  const std::string notes = bundle.notes();
  EXPECT_EQ(std::stoi(notes), std::stoi(notes.substr(notes.find('\n') + 1))) << notes;
}

TEST_F(DVDBurnTest, TheDiscIsUnmountedBeforeGrowisofsStartsWhateverComesOfIt) {
  services.addVisible("/Volumes/DVD", "/dev/kv0");
  services.lastStatus = -47;
  bool hadStarted = true;
  services.onListing = [&] { hadStarted = std::filesystem::exists(bundle.notesPath()); };
  run("touch \"$NOTES\"");
  EXPECT_FALSE(hadStarted);
  EXPECT_THAT(services.unmounted, ElementsAre("/Volumes/DVD"));
  EXPECT_TRUE(std::filesystem::exists(bundle.notesPath()));
}

TEST_F(DVDBurnTest, AGrowisofsThatIsNotThereIsAnErrorNotASuccess) {
  burn.startDVDBurnInOwnThread();
  ASSERT_TRUE(loop.runUntil([this] { return finished.load(); }));
  ASSERT_EQ(burn.burnErrors().size(), 1u);
}

TEST_F(DVDBurnTest, DeletingABurnWaitsForItsEnd) {
  bundle.addProgram("growisofs", "sleep 0.2; echo ended > \"$NOTES\"");
  {
    DVDBurn other(parameters(), services);
    other.startDVDBurnInOwnThread();
  }
  EXPECT_EQ(bundle.notes(), "ended\n");
}

// What a chunk does to the burn. That chunks are read by themselves shows in growisofs_output_test.

TEST_F(DVDBurnTest, AProgressLineAndTheBeginningOfTheNextMoveTheBarAndKeepTheBeginning) {
  burn.processStatus(" 42.17% done, estimate finish Sat Nov 21 08:00:00 2026\n 43.1");
  EXPECT_EQ(burn.percentDoneString(), " 42");
  EXPECT_EQ(burn.lastIncompleteStatus(), " 43.1");
  loop.deliverQueued();
  EXPECT_THAT(bar.values, ElementsAre(0.84));
  // The beginning is kept and never joined to what follows.
  burn.processStatus("8% done, estimate finish\n");
  EXPECT_EQ(burn.percentDoneString(), std::nullopt);
  EXPECT_EQ(burn.lastIncompleteStatus(), "");
}

TEST_F(DVDBurnTest, AChunkThatBeginsWithAnErrorIsStoredWholeAndIsNotTheKnownText) {
  burn.processStatus(std::string(kFull) + "\n");
  EXPECT_THAT(burn.burnErrors(), ElementsAre(std::string(kFull) + "\n"));
}

TEST_F(DVDBurnTest, TheSameErrorAfterOtherTextIsTheKnownText) {
  burn.processStatus("something else\n" + std::string(kFull) + "\n");
  EXPECT_THAT(burn.burnErrors(), ElementsAre(kFull));
}

TEST_F(DVDBurnTest, AnErrorBetweenTwoProgressLinesOfAChunkIsNotRecorded) {
  burn.processStatus(" 42.17% done, estimate\n:-( lost\n 43.17% done, estimate\n");
  EXPECT_THAT(burn.burnErrors(), IsEmpty());
  EXPECT_EQ(burn.percentDoneString(), " 43");
}

TEST_F(DVDBurnTest, AnErrorInTheChunksUnfinishedLineIsNotRecordedEvenOnceItIsFinished) {
  burn.processStatus("a line\n:-( cut ");
  burn.processStatus("in two\n");
  EXPECT_THAT(burn.burnErrors(), IsEmpty());
}

TEST_F(DVDBurnTest, FragmentsAddUpUntilALineEnds) {
  burn.processStatus("one ");
  burn.processStatus("two ");
  EXPECT_EQ(burn.lastIncompleteStatus(), "one two ");
  burn.processStatus("three\nfour");
  EXPECT_EQ(burn.lastIncompleteStatus(), "four");
}

TEST_F(DVDBurnTest, AFragmentAndAnErrorChunkLeaveTheProgressAsItIs) {
  burn.processStatus(" 42.17% done, estimate\n");
  loop.deliverQueued();
  bar.values.clear();
  burn.processStatus("fragment");
  burn.processStatus(":-( error\n");
  loop.deliverQueued();
  EXPECT_EQ(burn.percentDoneString(), " 42");
  EXPECT_THAT(bar.values, IsEmpty()) << "the bar is not updated either";
}

TEST_F(DVDBurnTest, ALineWithoutAPercentageMakesTheBarIndeterminateAgain) {
  burn.processStatus(" 42.17% done, estimate\n");
  loop.deliverQueued();
  EXPECT_FALSE(bar.isIndeterminate);
  burn.processStatus("/dev/sr0: flushing cache\n");
  EXPECT_EQ(burn.percentDoneString(), std::nullopt);
  loop.deliverQueued();
  EXPECT_TRUE(bar.isIndeterminate);
  EXPECT_EQ(bar.starts, 1);
}

TEST_F(DVDBurnTest, AnErrorLineUpdatesTheBarToo) {
  burn.processStatus("x\n:-( error\n");
  loop.deliverQueued();
  EXPECT_EQ(bar.starts, 1);
}

TEST_F(DVDBurnTest, ABurnWithoutABarIsReadAsWell) {
  DVDBurnParameters without = parameters();
  without.progressIndicator = nullptr;
  DVDBurn other(without, services);
  other.processStatus(" 42.17% done, estimate\n");
  loop.deliverQueued();
  EXPECT_EQ(other.percentDoneString(), " 42");
}

TEST_F(DVDBurnTest, AnUpdateThatIsQueuedComesToNothingOnceTheBurnIsGone) {
  {
    DVDBurn other(parameters(), services);
    other.processStatus(" 42.17% done, estimate\n");
  }
  loop.deliverQueued();
  EXPECT_THAT(bar.values, IsEmpty());
}

}  // namespace
}  // namespace kelvane
