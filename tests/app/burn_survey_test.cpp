// SPDX-License-Identifier: GPL-2.0-or-later
// What is found out about a burn while the user is asked, on discs in emulated drives, and held
// against the burn that follows.
#include "app/burn_survey.h"
#include "app/open_disc_fixture.h"
#include "foundation/temporary_user_defaults.h"
#include "platform/foundation/user_defaults.h"
#include "volumes/fake_device.h"

namespace kelvane::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

/// A window that takes in what it is told of the burn.
class AskingWindow : public ErasingWindow {
 public:
  bool showsBurnSummary() const override { return true; }
  void setBurnSummary(const BurnSummary& summary) override { summaries.push_back(summary); }

  bool knowsAll() const {
    const bool isMeasured = !summaries.empty() && summaries.back().needed &&
                            summaries.back().needed->certainty == BurnSummary::Certainty::Exact;
    return isMeasured || (!summaries.empty() && !summaries.back().problem.empty());
  }
  const BurnSummary& last() const { return summaries.back(); }

  std::vector<BurnSummary> summaries;
};

class BurnInQuestion : public OpenDiscTestOf<AskingWindow> {
 protected:
  std::vector<std::string> contents() const override { return {"a.txt", "b.txt", "x*y"}; }

  void write(const std::string& name, size_t bytes) {
    std::ofstream(volume_ + "/" + name) << std::string(bytes, 'x');
  }

  /// Closes the volume, and waits for the question and all that is to be told with it.
  void askToBurn() {
    controller_->closeVolume();
    ASSERT_TRUE(waitFor([this] { return window_.asksToBurn && window_.knowsAll(); }));
  }

  void burn() {
    controller_->burnConfirmationDidConfirm();
    ASSERT_TRUE(waitFor([this] { return controller_->currentDevice() == nullptr; }));
    EXPECT_THAT(window_.alerts, IsEmpty());
    device_->loadMedia();
  }

  void discard() {
    controller_->burnConfirmationDidCancel();
    ASSERT_TRUE(waitFor([this] { return controller_->currentDevice() == nullptr; }));
  }

  int64_t freeBytes() const {
    const auto media = device_->status().DRDeviceMediaInfoKey;
    return media ? media->DRDeviceMediaBlocksFreeKey.value_or(-1) * 2048 : -1;
  }

  TemporaryUserDefaults userDefaults_;
};

TEST_F(BurnInQuestion, IsCountedMeasuredAndLeavesTheDiscAsFreeAsWasForetold) {
  write("new.txt", 3000000);
  write("a.txt", 5);
  fs::rename(volume_ + "/b.txt", volume_ + "/c.txt");
  fs::create_directory(volume_ + "/folder");
  fs::remove(volume_ + "/x*y");
  const int64_t freeBefore = freeBytes();
  askToBurn();
  const BurnSummary told = window_.last();
  EXPECT_EQ(told.changes->added.files, 1U);
  EXPECT_EQ(told.changes->added.folders, 1U);
  EXPECT_EQ(told.changes->replaced.files, 1U);
  EXPECT_EQ(told.changes->renamed.files, 1U);
  EXPECT_EQ(told.changes->deleted.files, 1U);
  EXPECT_FALSE(told.warns());
  EXPECT_EQ(told.freeBefore->bytes, freeBefore);
  ASSERT_EQ(told.freeAfterwards->certainty, BurnSummary::Certainty::Exact);
  burn();
  EXPECT_EQ(freeBytes(), told.freeAfterwards->bytes);
  const auto media = device_->status().DRDeviceMediaInfoKey;
  EXPECT_EQ(*media->DRDeviceTrackInfoKey.at(2).DRTrackLengthKey * 2048, told.needed->bytes);
}

TEST_F(BurnInQuestion, IsGuessedBeforeItIsMeasured) {
  write("new.txt", 3000000);
  askToBurn();
  const BurnSummary first = window_.summaries.front();
  ASSERT_TRUE(first.changes && first.needed && first.freeAfterwards);
  EXPECT_EQ(first.needed->certainty, BurnSummary::Certainty::Estimated);
  EXPECT_NEAR(static_cast<double>(first.needed->bytes),
              static_cast<double>(window_.last().needed->bytes), 500000);
  discard();
}

TEST_F(BurnInQuestion, ChangesNothingOfWhatTheBurnIsMadeFrom) {
  write("new.txt", 10);
  fs::remove(volume_ + "/a.txt");
  askToBurn();
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(prefix_.path() + "/tmp")) {
    const std::string name = entry.path().filename().string();
    if (name != ".kelvanefs.lock") names.push_back(name);
  }
  std::ranges::sort(names);
  const std::string overlay = paths::lastPathComponent(controller_->tmpDirPath());
  EXPECT_THAT(names, ElementsAre("." + overlay + ".hide", overlay, "kelvanefsmount"));
  burn();
  EXPECT_TRUE(waitFor([this] { return controller_->mediaIsMounted(); }));
  EXPECT_FALSE(fs::exists(volume_ + "/a.txt"));
  EXPECT_TRUE(fs::exists(volume_ + "/new.txt"));
  close();
}

TEST_F(BurnInQuestion, ThatIsAnsweredAtOnceIsFoundOutNoFurther) {
  write("new.txt", 10);
  controller_->closeVolume();
  ASSERT_TRUE(waitFor([this] { return window_.asksToBurn; }));
  const size_t told = window_.summaries.size();
  burn();
  EXPECT_EQ(window_.summaries.size(), told);
  ASSERT_TRUE(waitFor([this] { return controller_->mediaIsMounted(); }));
  EXPECT_TRUE(fs::exists(volume_ + "/new.txt"));
  close();
}

TEST_F(BurnInQuestion, WarnsOfItemsThatAPatternHidesAndExactlyTheseAreMissingThen) {
  fs::remove(volume_ + "/x*y");
  for (const char* name : {"xy", "x1y", "xyz", "other"}) write(name, 10);
  fs::create_directory(volume_ + "/xfoldery");
  write("xfoldery/inside", 10);
  askToBurn();
  EXPECT_THAT(window_.last().hiddenToo, ElementsAre("x1y", "xfoldery/", "xy"));
  EXPECT_TRUE(window_.last().warns());
  burn();
  ASSERT_TRUE(waitFor([this] { return controller_->mediaIsMounted(); }));
  std::vector<std::string> left;
  for (const auto& entry : fs::directory_iterator(volume_)) {
    left.push_back(entry.path().filename().string());
  }
  EXPECT_THAT(left, ::testing::UnorderedElementsAre("a.txt", "b.txt", "other", "xyz"));
  close();
}

TEST_F(BurnInQuestion, ThatIsBoundToFailIsToldInPlainWords) {
  write("name that is no text \xff", 10);
  askToBurn();
  EXPECT_THAT(window_.last().problem, HasSubstr("ReasonNameNotText"));
  EXPECT_FALSE(window_.last().problemLiesInTheDisc);
  discard();
}

TEST_F(BurnInQuestion, DoesNotCountCompanionFilesThatAreDeletedBeforeIt) {
  UserDefaults::standard().setBool(true, "noappledoublefiles");
  write("new.txt", 10);
  write("._new.txt", 5000000);
  askToBurn();
  EXPECT_EQ(window_.last().changes->added.files, 1U);
  EXPECT_LT(window_.last().needed->bytes, 1000000);
  discard();
}

TEST_F(BurnInQuestion, KeepsTheChangesInAFolderWhereTheUserWantsThat) {
  write("new.txt", 10);
  fs::remove(volume_ + "/a.txt");
  const int64_t before = freeBytes();
  askToBurn();
  const std::string kept = controller_->tmpDirPath() + ".kept";
  controller_->burnConfirmationDidKeep();
  ASSERT_TRUE(waitFor([this] { return controller_->currentDevice() == nullptr; }));
  EXPECT_THAT(window_.alerts, ElementsAre("ChangesKept"));
  EXPECT_FALSE(window_.asksToBurn);
  EXPECT_EQ(fs::file_size(kept + "/new.txt"), 10U);
  EXPECT_FALSE(fs::exists(kept + "/a.txt")) << "what stood for the deleted file";
  device_->loadMedia();
  EXPECT_EQ(freeBytes(), before);
  EXPECT_FALSE(window_.replies.empty()) << "a pending quit goes on";
}

TEST_F(BurnInQuestion, EndsWithTheDiscThatIsTakenOut) {
  write("new.txt", 10);
  controller_->closeVolume();
  ASSERT_TRUE(waitFor([this] { return window_.asksToBurn; }));
  device_->ejectMedia();
  ASSERT_TRUE(waitFor([this] { return controller_->currentDevice() == nullptr; }));
  const size_t told = window_.summaries.size();
  bool later = false;
  QTimer::singleShot(0, [&later] { later = true; });
  ASSERT_TRUE(waitFor([&later] { return later; }));
  EXPECT_EQ(window_.summaries.size(), told);
}

class BurnInQuestionOnASmallDisc : public BurnInQuestion {
 protected:
  QStringList discOptions() const override { return {"--media", "cd-r", "--capacity", "60"}; }
};

TEST_F(BurnInQuestionOnASmallDisc, SaysByHowMuchTheSessionIsTooLarge) {
  write("large", 50000000);
  const int64_t freeBefore = freeBytes();
  askToBurn();
  const BurnSummary& told = window_.last();
  EXPECT_TRUE(told.isTooLarge());
  EXPECT_EQ(told.freeAfterwards->bytes, freeBefore - told.needed->bytes);
  discard();
}

class BurnInQuestionOnAClosedDisc : public BurnInQuestion {
 protected:
  QStringList discOptions() const override { return {"--media", "cd-r", "--closed"}; }
};

TEST_F(BurnInQuestionOnAClosedDisc, SaysThatNothingCanBeAddedToIt) {
  write("new.txt", 10);
  askToBurn();
  ASSERT_TRUE(waitFor([this] { return window_.last().isComplete; }));
  EXPECT_EQ(window_.last().problem, "ReasonDiscClosed");
  EXPECT_TRUE(window_.last().problemLiesInTheDisc);
  discard();
}

// A drive that answers READ TRACK INFORMATION for no track but the last: where a session may begin
// is known by nobody then, and its burn would be refused.
TEST_F(BurnInQuestion, SaysThatADriveDoesNotTellWhereASessionMayBegin) {
  FakeDevice drive("kv9");
  drive.setTracks({std::nullopt, 11702});
  SurveySubject subject;
  subject.overlay = prefix_.path() + "/changes";
  fs::create_directory(subject.overlay);
  subject.hideList = prefix_.path() + "/hidden";
  std::ofstream(subject.hideList).flush();
  subject.disc = prefix_.path() + "/source";
  subject.device = &drive;
  subject.volumes = services_.volumes;
  BurnSummary told;
  const BurnSurvey survey(subject, [&told](const BurnSummary& summary) { told = summary; });
  ASSERT_TRUE(waitFor([&told] { return told.isComplete; }));
  EXPECT_EQ(told.problem, "ReasonNoNextSession");
  EXPECT_TRUE(told.problemLiesInTheDisc);
}

class BurnInQuestionOnADvd : public BurnInQuestion {
 protected:
  QStringList discOptions() const override { return {"--media", "dvd+rw"}; }
};

TEST_F(BurnInQuestionOnADvd, IsMeasuredFromTheEndOfTheVolumeThatIsThere) {
  write("new.txt", 3000000);
  askToBurn();
  const int64_t left = window_.last().freeAfterwards->bytes;
  EXPECT_EQ(window_.last().freeAfterwards->certainty, BurnSummary::Certainty::Exact);
  burn();
  ASSERT_TRUE(waitFor([this] { return controller_->mediaIsMounted(); }));
  // A further session begins where the first was foretold to end.
  window_.summaries.clear();
  window_.hasAsked = false;
  write("more.txt", 10);
  askToBurn();
  EXPECT_EQ(window_.last().freeBefore->bytes, left);
  discard();
}

class BurnInQuestionOnABlankDisc : public BurnInQuestion {
 protected:
  std::vector<std::string> contents() const override { return {}; }
};

TEST_F(BurnInQuestionOnABlankDisc, IsOfAFirstSession) {
  write("new.txt", 3000000);
  askToBurn();
  EXPECT_EQ(window_.last().changes->added.files, 1U);
  const int64_t left = window_.last().freeAfterwards->bytes;
  burn();
  EXPECT_EQ(freeBytes(), left);
}

}  // namespace
}  // namespace kelvane::test
