// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/foundation/main_thread.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <thread>
#include <vector>

#include "foundation/application_fixture.h"

namespace kelvane {
namespace {

class MainThreadTest : public ApplicationFixture {};

TEST_F(MainThreadTest, WorkOfAnotherThreadRunsHereInItsOrder) {
  std::vector<int> done;
  std::thread worker([&] {
    EXPECT_FALSE(isMainThread());
    for (int i = 0; i < 3; ++i) {
      performOnMainThread([&done, i] {
        EXPECT_TRUE(isMainThread());
        done.push_back(i);
      });
    }
    performOnMainThread([] { QCoreApplication::quit(); });
  });
  worker.join();
  EXPECT_TRUE(done.empty());
  QCoreApplication::exec();
  EXPECT_EQ(done, (std::vector<int>{0, 1, 2}));
}

TEST_F(MainThreadTest, WorkOfTheMainThreadWaitsForTheCurrentEvent) {
  bool done = false;
  performOnMainThread([&] {
    done = true;
    QCoreApplication::quit();
  });
  EXPECT_FALSE(done);
  QCoreApplication::exec();
  EXPECT_TRUE(done);
}

TEST_F(MainThreadTest, WhoeverWaitsGoesOnAfterTheWork) {
  bool done = false;
  std::jthread worker([&](const std::stop_token& stop) {
    performOnMainThreadAndWait(
        [&] {
          EXPECT_TRUE(isMainThread());
          done = true;
        },
        stop);
    EXPECT_TRUE(done);
    performOnMainThread([] { QCoreApplication::quit(); });
  });
  QCoreApplication::exec();
  EXPECT_TRUE(done);
}

TEST_F(MainThreadTest, WhoeverWaitsIsFreedByAStopAndTheWorkIsNeverDone) {
  std::jthread worker(
      [](const std::stop_token& stop) { performOnMainThreadAndWait([] { FAIL(); }, stop); });
  worker.request_stop();
  worker.join();
  performOnMainThread([] { QCoreApplication::quit(); });
  QCoreApplication::exec();
}

TEST_F(MainThreadTest, DelayedWorkRuns) {
  bool done = false;
  performAfterDelay(std::chrono::milliseconds(1), [&] {
    done = true;
    QCoreApplication::quit();
  });
  QCoreApplication::exec();
  EXPECT_TRUE(done);
}

TEST(MainThreadWithoutApplication, WorkIsDropped) {
  performOnMainThread([] { FAIL(); });
  EXPECT_FALSE(isMainThread());
}

}  // namespace
}  // namespace kelvane
