// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/remaining_time.h"

#include "ui/window_test.h"

namespace kelvane {
namespace {

using std::chrono::milliseconds;
using std::chrono::minutes;
using std::chrono::seconds;

class RemainingTimeTest : public testing::WindowTest {
 protected:
  milliseconds now_{1'000'000};
  RemainingTime remaining_{[this] { return now_; }};
};

TEST_F(RemainingTimeTest, IsWhatTheRestTakesAtTheSpeedSoFar) {
  now_ += minutes(2);
  EXPECT_EQ(remaining_.textAt(0.25), "About 6 minutes left");
  EXPECT_EQ(remaining_.textAt(0.5), "About 2 minutes left");
  EXPECT_EQ(remaining_.textAt(0.7), "Less than a minute left");
}

TEST_F(RemainingTimeTest, IsNotToldBeforeItCanBeJudged) {
  now_ += milliseconds(1900);
  EXPECT_EQ(remaining_.textAt(0.5), "") << "too short a time";
  now_ += minutes(1);
  EXPECT_EQ(remaining_.textAt(0.01), "") << "too little done";
}

TEST_F(RemainingTimeTest, IsNoneWhenAllIsDone) {
  now_ += minutes(2);
  EXPECT_EQ(remaining_.textAt(1), "");
}

TEST_F(RemainingTimeTest, LeavesOutWhatWasDoneBefore) {
  now_ += minutes(50);
  remaining_.begin(0.5);
  now_ += minutes(1);
  EXPECT_EQ(remaining_.textAt(0.6), "About 4 minutes left");
  EXPECT_EQ(remaining_.textAt(0.75), "Less than a minute left") << "one minute is not spoken of";
}

TEST_F(RemainingTimeTest, IsJudgedFromTheNextFractionOn) {
  now_ += minutes(50);
  remaining_.beginWithNext();
  EXPECT_EQ(remaining_.textAt(0.5), "") << "nothing has been seen of it yet";
  now_ += minutes(1);
  EXPECT_EQ(remaining_.textAt(0.6), "About 4 minutes left");
}

}  // namespace
}  // namespace kelvane
