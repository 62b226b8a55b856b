// SPDX-License-Identifier: GPL-2.0-or-later
#include "burn/progress_watcher.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <memory>

#include "burn/noted_bar.h"
#include "foundation/temporary_folder.h"
#include "recording/event_loop.h"

namespace kelvane {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class ProgressWatcherTest : public ::testing::Test {
 protected:
  void setSize(uintmax_t bytes) {
    if (!std::filesystem::exists(path)) std::ofstream file(path);
    std::filesystem::resize_file(path, bytes);
  }

  testing::EventLoop loop;
  testing::TemporaryFolder folder;
  const std::string path = folder.file("image.iso");
  testing::NotedBar bar;
  ProgressWatcher watcher;
};

TEST_F(ProgressWatcherTest, MovesTheBarByItselfAsTheFileGrows) {
  watcher.startWatching(path, 1000.0, &bar);
  setSize(250);
  ASSERT_TRUE(loop.runUntil([this] { return !bar.values.empty(); }));
  EXPECT_FALSE(bar.isIndeterminate);
  setSize(500);
  ASSERT_TRUE(loop.runUntil([this] { return bar.values.size() > 1; }));
  EXPECT_THAT(bar.values, ElementsAre(0.25, 0.5));
}

TEST_F(ProgressWatcherTest, DoesNotTouchTheBarWhileThereIsNoFile) {
  watcher.startWatching(path, 1000.0, &bar);
  watcher.checkProgress();
  loop.deliverQueued();
  EXPECT_THAT(bar.values, IsEmpty());
  EXPECT_TRUE(bar.isIndeterminate);
}

TEST_F(ProgressWatcherTest, DoesNotTouchTheBarWhileTheSizeStaysTheSame) {
  setSize(300);
  watcher.startWatching(path, 1000.0, &bar);
  for (int look = 0; look < 3; ++look) watcher.checkProgress();
  loop.deliverQueued();
  ASSERT_EQ(bar.values.size(), 1U);
  watcher.checkProgress();
  loop.deliverQueued();
  EXPECT_EQ(bar.values.size(), 1U);
}

TEST_F(ProgressWatcherTest, AnEmptyFileIsWhereTheBarIsAnyway) {
  setSize(0);
  watcher.startWatching(path, 1000.0, &bar);
  watcher.checkProgress();
  loop.deliverQueued();
  EXPECT_THAT(bar.values, IsEmpty());
}

TEST_F(ProgressWatcherTest, NeverTouchesTheBarWithinALook) {
  setSize(300);
  watcher.startWatching(path, 1000.0, &bar);
  watcher.checkProgress();
  EXPECT_THAT(bar.values, IsEmpty());
}

TEST_F(ProgressWatcherTest, TakesTheSizeInSinglePrecision) {
  constexpr uintmax_t kNotAFloat = (uintmax_t{1} << 24) + 1;
  setSize(kNotAFloat);
  watcher.startWatching(path, 3.0, &bar);
  watcher.checkProgress();
  loop.deliverQueued();
  EXPECT_THAT(bar.values, ElementsAre(static_cast<double>(uintmax_t{1} << 24) / 3.0));
}

TEST_F(ProgressWatcherTest, AFractionThatIsNotANumberIsAnotherOneAtEachLook) {
  setSize(0);
  watcher.startWatching(path, 0.0, &bar);
  for (int look = 0; look < 3; ++look) watcher.checkProgress();
  loop.deliverQueued();
  ASSERT_EQ(bar.values.size(), 3U);
  EXPECT_TRUE(std::isnan(bar.values[0]));
}

TEST_F(ProgressWatcherTest, ABarMayGoBeyondItsFirstHalf) {
  setSize(1500);
  watcher.startWatching(path, 1000.0, &bar);
  watcher.checkProgress();
  loop.deliverQueued();
  EXPECT_THAT(bar.values, ElementsAre(1.5));
}

TEST_F(ProgressWatcherTest, WatchesAnotherFileWithoutForgettingTheFraction) {
  setSize(300);
  watcher.startWatching(path, 1000.0, &bar);
  watcher.checkProgress();
  const std::string other = folder.file("other.iso");
  std::filesystem::copy_file(path, other);
  watcher.startWatching(other, 1000.0, &bar);
  watcher.checkProgress();
  loop.deliverQueued();
  EXPECT_THAT(bar.values, ElementsAre(0.3));
}

TEST_F(ProgressWatcherTest, StopsWhenItIsTold) {
  watcher.startWatching(path, 1000.0, &bar);
  ProgressWatcher other;
  testing::NotedBar otherBar;
  watcher.stopWatching();
  other.startWatching(path, 1000.0, &otherBar);
  setSize(300);
  ASSERT_TRUE(loop.runUntil([&otherBar] { return !otherBar.values.empty(); }));
  EXPECT_THAT(bar.values, IsEmpty());
}

TEST_F(ProgressWatcherTest, WithoutABarNothingHappens) {
  setSize(300);
  watcher.startWatching(path, 1000.0, nullptr);
  watcher.checkProgress();
  loop.deliverQueued();
  watcher.updateIndicator();
}

TEST_F(ProgressWatcherTest, AnUpdateThatIsStillQueuedDoesNotOutliveTheWatcher) {
  setSize(300);
  auto gone = std::make_unique<ProgressWatcher>();
  gone->startWatching(path, 1000.0, &bar);
  gone->checkProgress();
  gone.reset();
  loop.deliverQueued();
  EXPECT_THAT(bar.values, IsEmpty());
}

}  // namespace
}  // namespace kelvane
