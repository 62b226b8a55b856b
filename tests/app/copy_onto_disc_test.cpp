// SPDX-License-Identifier: GPL-2.0-or-later
// Files copied onto an opened disc, on a real mount: what arrives on the volume and on the disc,
// and what holds while a copy is under way.
#include <fcntl.h>
#include <sys/stat.h>

#include "app/open_disc_fixture.h"
#include "ui/copy_job.h"

namespace kelvane::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// A window that notes what is to be copied; a test says how far it is.
class CopyingWindow : public ErasingWindow {
 public:
  void beginCopySheet(const CopyRequest& request) override {
    requests.push_back(request);
    copying = true;
  }
  bool isCopying() const override { return copying; }
  void endCopySheet() override {
    copying = false;
    ++ended;
  }
  void beep() override { ++beeps; }

  std::vector<CopyRequest> requests;
  bool copying = false;
  int ended = 0;
  int beeps = 0;
};

class CopyOntoDisc : public OpenDiscTestOf<CopyingWindow>, public CopyObserver {
 protected:
  void progressed(const CopyProgress& progress) override {
    if (stopsAt_ && progress.bytes >= *stopsAt_) stop_.request_stop();
  }
  std::optional<ConflictAnswer> ask(const CopyConflict&) override { return answer_; }

  std::string from(const std::string& name) const { return prefix_.path() + "/from/" + name; }
  void write(const std::string& name, const std::string& content) {
    fs::create_directories(fs::path(from(name)).parent_path());
    std::ofstream(from(name), std::ios::binary) << content;
  }
  static std::string contentOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  /// Drops the files, and copies them as the window would.
  CopyOutcome drop(const std::vector<std::string>& names) {
    std::vector<std::string> paths;
    for (const std::string& name : names) paths.push_back(from(name));
    controller_->addFiles(paths);
    EXPECT_EQ(window_.requests.size(), 1U);
    if (window_.requests.empty()) return {};
    EXPECT_EQ(window_.requests.back().sources, paths);
    const CopyOutcome outcome = copyInto(window_.requests.back(), *this, stop_.get_token());
    window_.copying = false;
    return outcome;
  }

  void burn() {
    controller_->closeVolume();
    ASSERT_TRUE(waitFor([this] { return window_.asksToBurn; }));
    controller_->burnConfirmationDidConfirm();
    ASSERT_TRUE(waitFor([this] { return controller_->currentDevice() == nullptr; }));
    ASSERT_THAT(window_.alerts, IsEmpty());
    device_->loadMedia();
    ASSERT_TRUE(waitFor([this] { return controller_->mediaIsMounted(); }));
  }

  std::optional<uint64_t> stopsAt_;
  std::stop_source stop_;
  std::optional<ConflictAnswer> answer_ = ConflictAnswer::Replace;
};

TEST_F(CopyOntoDisc, ArrivesOnTheVolumeAndOnTheDisc) {
  write("a.txt", "replaced");
  write("folder/deep/file", std::string(3'000'000, 'x'));
  write("folder/empty", "");
  fs::create_symlink("deep/file", from("folder/link"));
  fs::permissions(from("folder/empty"), fs::perms{0600});
  const timespec times[] = {{1'500'000'000, 0}, {1'500'000'000, 0}};
  ASSERT_EQ(utimensat(AT_FDCWD, from("folder/deep/file").c_str(), times, 0), 0);
  const CopyOutcome outcome = drop({"a.txt", "folder"});
  EXPECT_THAT(outcome.failures, IsEmpty());
  EXPECT_EQ(outcome.files, 4U);
  EXPECT_EQ(contentOf(volume_ + "/a.txt"), "replaced");
  EXPECT_EQ(fs::status(volume_ + "/folder/empty").permissions(), fs::perms{0600});
  EXPECT_EQ(fs::read_symlink(volume_ + "/folder/link"), "deep/file");
  struct stat status = {};
  ASSERT_EQ(stat((volume_ + "/folder/deep/file").c_str(), &status), 0);
  EXPECT_EQ(status.st_mtim.tv_sec, 1'500'000'000);

  burn();
  EXPECT_EQ(contentOf(volume_ + "/a.txt"), "replaced");
  EXPECT_EQ(contentOf(volume_ + "/folder/deep/file"), std::string(3'000'000, 'x'));
  EXPECT_EQ(fs::read_symlink(volume_ + "/folder/link"), "deep/file");
  ASSERT_EQ(stat((volume_ + "/folder/deep/file").c_str(), &status), 0);
  EXPECT_EQ(status.st_mtim.tv_sec, 1'500'000'000);
  std::vector<std::string> names;
  for (const auto& entry : fs::recursive_directory_iterator(volume_)) {
    names.push_back(entry.path().lexically_relative(volume_).string());
  }
  EXPECT_THAT(names,
              ::testing::UnorderedElementsAre("a.txt", "folder", "folder/deep", "folder/deep/file",
                                              "folder/empty", "folder/link"));
  close();
}

TEST_F(CopyOntoDisc, CancelledLeavesNothingThatCouldBeBurned) {
  write("folder/first", "1");
  write("folder/second", std::string(20'000'000, 'x'));
  stopsAt_ = 5'000'000;
  const CopyOutcome outcome = drop({"folder"});
  EXPECT_TRUE(outcome.cancelled);
  EXPECT_FALSE(fs::exists(volume_ + "/folder"));
  EXPECT_TRUE(fs::is_empty(controller_->tmpDirPath()));
  close();
  EXPECT_FALSE(window_.hasAsked) << "there is nothing to be burned";
}

TEST_F(CopyOntoDisc, KeepsTheDiscsFileBesideTheNewOne) {
  write("a.txt", "new");
  answer_ = ConflictAnswer::KeepBoth;
  drop({"a.txt"});
  EXPECT_EQ(contentOf(volume_ + "/a.txt"), "content");
  EXPECT_EQ(contentOf(volume_ + "/a (2).txt"), "new");
  burn();
  EXPECT_EQ(contentOf(volume_ + "/a.txt"), "content");
  EXPECT_EQ(contentOf(volume_ + "/a (2).txt"), "new");
  close();
}

TEST_F(CopyOntoDisc, CopiesNothingForWhichThereIsNoRoomOnTheDisc) {
  write("large", "");
  fs::resize_file(from("large"), uintmax_t{800} << 20);
  const CopyOutcome outcome = drop({"large"});
  ASSERT_TRUE(outcome.missingRoom.has_value());
  EXPECT_EQ(outcome.missingRoom->needed, uint64_t{800} << 20);
  EXPECT_FALSE(fs::exists(volume_ + "/large"));
  close();
}

TEST_F(CopyOntoDisc, RefusesTheFolderInWhichTheVolumeItselfIsSeen) {
  fs::create_directory(from(""));
  const CopyOutcome outcome = drop({"../Volumes", ".."});
  ASSERT_EQ(outcome.failures.size(), 2U);
  EXPECT_EQ(outcome.failures[0].problem, CopyProblem::HoldsTheVolume);
  EXPECT_EQ(outcome.failures[1].problem, CopyProblem::HoldsTheVolume);
  EXPECT_TRUE(fs::is_empty(controller_->tmpDirPath()));
  close();
}

TEST_F(CopyOntoDisc, KeepsTheDiscFromBeingClosedWhileItIsUnderWay) {
  controller_->addFiles({from("a")});
  controller_->mountBurnFS();
  EXPECT_THAT(window_.alerts, ElementsAre("CopyRunning"));
  EXPECT_FALSE(controller_->closeVolume());
  EXPECT_TRUE(controller_->mediaIsMounted());
  EXPECT_TRUE(fs::exists(volume_ + "/a.txt"));
  EXPECT_FALSE(controller_->volumeTakesFiles()) << "one copy at a time";
  window_.copying = false;
  close();
}

TEST_F(CopyOntoDisc, EndsWithTheDiscThatIsTakenOut) {
  controller_->addFiles({from("a")});
  device_->ejectMedia();
  ASSERT_TRUE(waitFor([this] { return controller_->currentDevice() == nullptr; }));
  EXPECT_GE(window_.ended, 1);
}

TEST_F(CopyOntoDisc, IsRefusedWithABeepWhereNoDiscIsOpen) {
  close();
  EXPECT_FALSE(controller_->volumeTakesFiles());
  controller_->addFiles({from("a")});
  EXPECT_EQ(window_.beeps, 1);
  EXPECT_THAT(window_.requests, IsEmpty());
}

TEST_F(CopyOntoDisc, IsRefusedDuringABurn) {
  controller_->setBurnInProgress(true);
  EXPECT_FALSE(controller_->volumeTakesFiles());
  controller_->setBurnInProgress(false);
  EXPECT_TRUE(controller_->volumeTakesFiles());
  close();
}

}  // namespace
}  // namespace kelvane::test
