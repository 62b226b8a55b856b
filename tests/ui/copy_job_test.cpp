// SPDX-License-Identifier: GPL-2.0-or-later
// Copying files and folders into a folder, without a window.
#include "ui/copy_job.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>

#include "foundation/temporary_folder.h"
#include "ui/copy_survey.h"

namespace kelvane {
namespace {

namespace fs = std::filesystem;

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class CopyJob : public ::testing::Test, public CopyObserver {
 protected:
  CopyJob() {
    fs::create_directory(from());
    fs::create_directory(to());
  }

  void progressed(const CopyProgress& progress) override {
    steps_.push_back(progress);
    if (onProgress_) onProgress_(progress);
  }
  std::optional<ConflictAnswer> ask(const CopyConflict& conflict) override {
    asked_.push_back(conflict.name + (conflict.canReplace ? "" : " (a folder)"));
    return answer_;
  }

  std::string from(const std::string& name = {}) const {
    return folder_.file("from" + slashed(name));
  }
  std::string to(const std::string& name = {}) const { return folder_.file("to" + slashed(name)); }

  static void write(const std::string& path, const std::string& content) {
    fs::create_directories(fs::path(path).parent_path());
    std::ofstream(path, std::ios::binary) << content;
  }
  static std::string contentOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  static std::vector<std::string> namesIn(const std::string& root) {
    std::vector<std::string> names;
    for (const auto& entry : fs::recursive_directory_iterator(root)) {
      names.push_back(entry.path().lexically_relative(root).string());
    }
    std::ranges::sort(names);
    return names;
  }

  CopyOutcome copy(std::vector<std::string> sources) {
    return copyInto({std::move(sources), to(), scratch_}, *this, stop_.get_token());
  }
  std::vector<CopyProblem> problemsOf(const CopyOutcome& outcome) {
    std::vector<CopyProblem> problems;
    for (const CopyFailure& failure : outcome.failures) problems.push_back(failure.problem);
    return problems;
  }

  testing::TemporaryFolder folder_;
  std::string scratch_;
  std::optional<ConflictAnswer> answer_ = ConflictAnswer::Skip;
  std::vector<std::string> asked_;
  std::vector<CopyProgress> steps_;
  std::function<void(const CopyProgress&)> onProgress_;
  std::stop_source stop_;

 private:
  static std::string slashed(const std::string& name) { return name.empty() ? "" : "/" + name; }
};

TEST_F(CopyJob, KeepsContentsModesTimesAndLinks) {
  write(from("a.txt"), "content");
  write(from("folder/deep/b"), std::string(3'000'000, 'b'));
  fs::create_symlink("../a.txt", from("folder/link"));
  fs::create_symlink("/nowhere", from("dangling"));
  fs::permissions(from("a.txt"), fs::perms{0640});
  fs::permissions(from("folder/deep"), fs::perms{0550});
  for (const std::string name : {"a.txt", "folder/deep/b", "folder/deep", "folder", "dangling"}) {
    const timespec times[] = {{1000, 5}, {1'600'000'000, 123'456'789}};
    ASSERT_EQ(utimensat(AT_FDCWD, from(name).c_str(), times, AT_SYMLINK_NOFOLLOW), 0);
  }
  const CopyOutcome outcome = copy({from("a.txt"), from("folder/"), from("dangling")});
  EXPECT_THAT(outcome.failures, IsEmpty());
  EXPECT_EQ(outcome.files, 4U);
  EXPECT_EQ(namesIn(to()), namesIn(from()));
  EXPECT_EQ(contentOf(to("a.txt")), "content");
  EXPECT_EQ(contentOf(to("folder/deep/b")), contentOf(from("folder/deep/b")));
  EXPECT_EQ(fs::read_symlink(to("folder/link")), "../a.txt");
  EXPECT_EQ(fs::read_symlink(to("dangling")), "/nowhere");
  EXPECT_EQ(fs::status(to("a.txt")).permissions(), fs::perms{0640});
  EXPECT_EQ(fs::status(to("folder/deep")).permissions(), fs::perms{0550});
  for (const std::string name : {"a.txt", "folder/deep/b", "folder/deep", "folder", "dangling"}) {
    struct stat status = {};
    ASSERT_EQ(lstat(to(name).c_str(), &status), 0);
    EXPECT_EQ(status.st_mtim.tv_sec, 1'600'000'000) << name;
    EXPECT_EQ(status.st_mtim.tv_nsec, 123'456'789) << name;
  }
  fs::permissions(from("folder/deep"), fs::perms{0750});
  fs::permissions(to("folder/deep"), fs::perms{0750});
}

TEST_F(CopyJob, TellsHowFarItIsUpToTheEnd) {
  write(from("a"), std::string(2'500'000, 'a'));
  write(from("b"), "12");
  copy({from("a"), from("b")});
  ASSERT_FALSE(steps_.empty());
  EXPECT_EQ(steps_.front().filesInAll, 2U);
  EXPECT_EQ(steps_.front().bytesInAll, 2'500'002U);
  EXPECT_EQ(steps_.front().bytes, 0U);
  EXPECT_TRUE(std::ranges::is_sorted(steps_, {}, &CopyProgress::bytes));
  EXPECT_EQ(steps_.back().files, 2U);
  EXPECT_EQ(steps_.back().bytes, 2'500'002U);
  EXPECT_EQ(steps_.back().name, "b");
}

TEST_F(CopyJob, ReplacesAFileWhereThatIsWanted) {
  write(from("a"), "new");
  write(to("a"), "old");
  answer_ = ConflictAnswer::Replace;
  copy({from("a")});
  EXPECT_THAT(asked_, ElementsAre("a"));
  EXPECT_EQ(contentOf(to("a")), "new");
}

TEST_F(CopyJob, KeepsBothUnderTheFirstFreeNumberBeforeTheEnding) {
  write(from("a.tar"), "new");
  write(from(".hidden"), "new");
  write(to("a.tar"), "old");
  write(to("a (2).tar"), "older");
  write(to(".hidden"), "old");
  answer_ = ConflictAnswer::KeepBoth;
  copy({from("a.tar"), from(".hidden")});
  EXPECT_EQ(contentOf(to("a.tar")), "old");
  EXPECT_EQ(contentOf(to("a (3).tar")), "new");
  EXPECT_EQ(contentOf(to(".hidden (2)")), "new");
}

TEST_F(CopyJob, SkipsAndGoesOnWithTheNextFile) {
  write(from("a"), "new");
  write(from("b"), "new");
  write(to("a"), "old");
  const CopyOutcome outcome = copy({from("a"), from("b")});
  EXPECT_EQ(contentOf(to("a")), "old");
  EXPECT_EQ(contentOf(to("b")), "new");
  EXPECT_EQ(outcome.files, 1U);
  EXPECT_EQ(steps_.back().files, 2U) << "it is done with both";
}

TEST_F(CopyJob, PutsAFolderIntoOneOfTheSameNameWithoutAQuestion) {
  write(from("f/new"), "new");
  write(from("f/sub/new"), "new");
  write(to("f/old"), "old");
  write(to("f/sub/old"), "old");
  fs::permissions(to("f"), fs::perms{0711});
  copy({from("f")});
  EXPECT_THAT(asked_, IsEmpty());
  EXPECT_THAT(namesIn(to()), ElementsAre("f", "f/new", "f/old", "f/sub", "f/sub/new", "f/sub/old"));
  EXPECT_EQ(fs::status(to("f")).permissions(), fs::perms{0711}) << "it stays what it was";
}

TEST_F(CopyJob, NeverReplacesAFolderByAFileNorAFileByAFolder) {
  write(from("a"), "file");
  write(from("b/inside"), "new");
  write(to("a/inside"), "old");
  write(to("b"), "file");
  answer_ = ConflictAnswer::Replace;
  copy({from("a"), from("b")});
  EXPECT_THAT(asked_, ElementsAre("a (a folder)", "b (a folder)"));
  EXPECT_THAT(namesIn(to()), ElementsAre("a", "a (2)", "a/inside", "b", "b (2)", "b (2)/inside"));
}

TEST_F(CopyJob, ReplacesALinkItselfAndNotWhatItLeadsTo) {
  write(from("a"), "new");
  write(folder_.file("victim"), "old");
  fs::create_symlink(folder_.file("victim"), to("a"));
  answer_ = ConflictAnswer::Replace;
  copy({from("a")});
  EXPECT_FALSE(fs::is_symlink(to("a")));
  EXPECT_EQ(contentOf(folder_.file("victim")), "old");
}

TEST_F(CopyJob, CancelledAtAQuestionLeavesNothingOfTheItemInQuestion) {
  write(from("f/a"), "new");
  write(from("f/b"), "new");
  write(from("f/sub/c"), "new");
  write(from("z"), "new");
  write(to("f/b"), "old");
  answer_ = std::nullopt;
  const CopyOutcome outcome = copy({from("f"), from("z")});
  EXPECT_TRUE(outcome.cancelled);
  EXPECT_THAT(namesIn(to()), ElementsAre("f", "f/b"));
  EXPECT_EQ(contentOf(to("f/b")), "old");
}

TEST_F(CopyJob, CancelledInTheMiddleOfAFileLeavesNeitherItNorTheFolderAroundIt) {
  write(from("a"), "whole");
  write(from("f/locked/first"), "1");
  fs::permissions(from("f/locked"), fs::perms{0555});
  write(from("f/middle"), std::string(8'000'000, 'x'));
  onProgress_ = [this](const CopyProgress& progress) {
    if (progress.name == "middle" && progress.bytes > 1'000'000) stop_.request_stop();
  };
  const CopyOutcome outcome = copy({from("a"), from("f")});
  EXPECT_TRUE(outcome.cancelled);
  EXPECT_THAT(namesIn(to()), ElementsAre("a")) << "what was whole before stays";
  fs::permissions(from("f/locked"), fs::perms{0755});
}

TEST_F(CopyJob, CancelledWhileReplacingKeepsTheOldFile) {
  write(from("a"), std::string(8'000'000, 'x'));
  write(to("a"), "old");
  answer_ = ConflictAnswer::Replace;
  onProgress_ = [this](const CopyProgress& progress) {
    if (progress.bytes > 0) stop_.request_stop();
  };
  copy({from("a")});
  EXPECT_EQ(contentOf(to("a")), "old");
  EXPECT_THAT(namesIn(to()), ElementsAre("a"));
}

TEST_F(CopyJob, NamesEachItemThatCannotBeCopiedAndCopiesTheOthers) {
  write(from("good"), "1");
  write(from("f/good"), "1");
  ASSERT_EQ(mkfifo(from("f/pipe").c_str(), 0600), 0);
  write(from("f/huge"), "");
  fs::resize_file(from("f/huge"), uintmax_t{1} << 32);
  const CopyOutcome outcome =
      copy({from("missing"), "relative", from("f"), from("f/pipe"), from("good")});
  std::vector<CopyProblem> problems = problemsOf(outcome);
  std::ranges::sort(problems);
  EXPECT_THAT(problems,
              ElementsAre(CopyProblem::NotReadable, CopyProblem::TooLarge, CopyProblem::NotAFile,
                          CopyProblem::NotAFile, CopyProblem::NotAbsolute));
  EXPECT_THAT(namesIn(to()), ElementsAre("f", "f/good", "good"));
}

TEST_F(CopyJob, AFileThatMayNotBeReadIsNamed) {
  if (geteuid() == 0) GTEST_SKIP() << "root may read everything";
  write(from("f/secret"), "1");
  write(from("f/open"), "1");
  fs::permissions(from("f/secret"), fs::perms::none);
  const CopyOutcome outcome = copy({from("f")});
  ASSERT_EQ(outcome.failures.size(), 1U);
  EXPECT_EQ(outcome.failures[0].path, from("f/secret"));
  EXPECT_EQ(outcome.failures[0].problem, CopyProblem::NotReadable);
  EXPECT_THAT(namesIn(to()), ElementsAre("f", "f/open"));
}

TEST_F(CopyJob, RefusesAFolderThatHoldsTheDestinationAlsoByALinkAndWhatIsThereAlready) {
  write(to("there"), "1");
  fs::create_symlink(folder_.file(""), from("way up"));
  const std::string above = from("way up") + "/to/..";
  const CopyOutcome outcome = copy({folder_.file("."), above, to(), to("there")});
  EXPECT_THAT(problemsOf(outcome),
              ElementsAre(CopyProblem::HoldsTheVolume, CopyProblem::HoldsTheVolume,
                          CopyProblem::HoldsTheVolume, CopyProblem::AlreadyThere));
  EXPECT_THAT(namesIn(to()), ElementsAre("there"));
}

TEST_F(CopyJob, CopiesNothingWhereThereIsNotRoomForAll) {
  write(from("huge"), "");
  fs::resize_file(from("huge"), (uintmax_t{1} << 32) - 1);
  std::vector<std::string> sources;
  uintmax_t needed = 0;
  // Other tests may give room back meanwhile.
  const uintmax_t mostFree = fs::space(to()).available + (uintmax_t{1} << 32);
  for (int number = 0; needed <= mostFree; ++number) {
    sources.push_back(from("huge " + std::to_string(number)));
    fs::create_hard_link(from("huge"), sources.back());
    needed += (uintmax_t{1} << 32) - 1;
    if (number > 20000) GTEST_SKIP() << "there is too much room here";
  }
  const CopyOutcome outcome = copy(sources);
  ASSERT_TRUE(outcome.missingRoom.has_value());
  EXPECT_EQ(outcome.missingRoom->needed, needed);
  EXPECT_LT(outcome.missingRoom->free, needed);
  EXPECT_THAT(namesIn(to()), IsEmpty());
}

TEST_F(CopyJob, WhoseFolderHasGoneCannotBeMeasuredAndFailsByItsFiles) {
  write(from("a"), "1");
  fs::remove(to());
  const CopyOutcome outcome = copy({from("a")});
  EXPECT_THAT(problemsOf(outcome), ElementsAre(CopyProblem::Failed));
}

}  // namespace
}  // namespace kelvane
