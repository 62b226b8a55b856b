// SPDX-License-Identifier: GPL-2.0-or-later
// The burn progress bar from 0 to 2, and the percentage beside it.
#include <QLabel>
#include <QProgressBar>
#include <QTest>
#include <limits>

#include "platform/foundation/strings_table.h"
#include "ui/burn_progress_bar.h"
#include "ui/window_test.h"

namespace kelvane {
namespace {

using namespace kelvane::testing;

class BurnView : public WindowTest {
 protected:
  QProgressBar* bar() { return child<QProgressBar>("burnProgressIndicator"); }
  ProgressIndicator& indicator() { return window_.burnProgressIndicator(); }
  QString percent() { return child<QLabel>("burnPercentField")->text(); }

  double shownShare() { return static_cast<double>(bar()->value()) / bar()->maximum(); }
  bool isBusy() { return bar()->minimum() == 0 && bar()->maximum() == 0; }
};

TEST_F(BurnView, BarFillsFrom0To2) {
  indicator().setIndeterminate(false);
  indicator().setDoubleValue(0);
  EXPECT_DOUBLE_EQ(shownShare(), 0);
  EXPECT_EQ(percent(), "0%");
  indicator().setDoubleValue(1);
  EXPECT_DOUBLE_EQ(shownShare(), 0.5);
  EXPECT_EQ(percent(), "50%");
  indicator().setDoubleValue(1.5);
  EXPECT_DOUBLE_EQ(shownShare(), 0.75);
  indicator().setDoubleValue(2);
  EXPECT_DOUBLE_EQ(shownShare(), 1);
  EXPECT_EQ(percent(), "100%");
}

TEST_F(BurnView, BarShowsSmallSteps) {
  indicator().setDoubleValue(0.84);
  const int before = bar()->value();
  indicator().setDoubleValue(0.842);
  EXPECT_GT(bar()->value(), before);
}

TEST_F(BurnView, PercentageNeverSaysDoneBeforeItIs) {
  indicator().setDoubleValue(1.999);
  EXPECT_EQ(percent(), "99%");
}

TEST_F(BurnView, ValuesOutsideTheRangeCountAsItsEnds) {
  indicator().setDoubleValue(2.7);
  EXPECT_DOUBLE_EQ(shownShare(), 1);
  indicator().setDoubleValue(-1);
  EXPECT_DOUBLE_EQ(shownShare(), 0);
  indicator().setDoubleValue(0.5);
  indicator().setDoubleValue(std::numeric_limits<double>::quiet_NaN());
  EXPECT_DOUBLE_EQ(shownShare(), 0.25);
  indicator().setDoubleValue(std::numeric_limits<double>::infinity());
  EXPECT_DOUBLE_EQ(shownShare(), 1);
}

TEST_F(BurnView, IndeterminateBarStandsStillUntilItsAnimationStarts) {
  indicator().setDoubleValue(1.5);
  indicator().setIndeterminate(true);
  EXPECT_FALSE(isBusy());
  EXPECT_DOUBLE_EQ(shownShare(), 0);
  EXPECT_EQ(percent(), "");
  indicator().startAnimation();
  EXPECT_TRUE(isBusy());
  indicator().stopAnimation();
  EXPECT_FALSE(isBusy());
}

TEST_F(BurnView, DeterminateBarComesBackWithItsValue) {
  indicator().setIndeterminate(true);
  indicator().startAnimation();
  indicator().setIndeterminate(false);
  indicator().setDoubleValue(1.2);
  EXPECT_FALSE(isBusy());
  EXPECT_DOUBLE_EQ(shownShare(), 0.6);
  EXPECT_EQ(percent(), "60%");
}

TEST_F(BurnView, AnimationThatStartsLateDoesNotTakeADeterminateBarAway) {
  indicator().setIndeterminate(true);
  indicator().setIndeterminate(false);
  indicator().setDoubleValue(0.3);
  indicator().startAnimation();
  EXPECT_FALSE(isBusy());
  EXPECT_DOUBLE_EQ(shownShare(), 0.15);
}

TEST_F(BurnView, TimeIsToldWhileTheDiscIsWrittenAndNotWhileItIsPrepared) {
  constexpr int kFarTooLong = 60000;
  const auto* remaining = child<QLabel>("burnRemainingField");
  window_.setBurnMessage(localizedString("burningchangescd"));
  indicator().setIndeterminate(false);
  indicator().setDoubleValue(1);
  // It is judged by what passes from here on.
  EXPECT_TRUE(QTest::qWaitFor(
      [&] {
        indicator().setDoubleValue(1.9);
        return !remaining->text().isEmpty();
      },
      kFarTooLong));
  EXPECT_EQ(remaining->text(), "Less than a minute left");
  indicator().setIndeterminate(true);
  indicator().startAnimation();
  EXPECT_EQ(remaining->text(), "") << "nobody knows any more";
  window_.setBurnMessage(localizedString("preparingdata"));
  indicator().setIndeterminate(false);
  indicator().setDoubleValue(1.95);
  EXPECT_EQ(remaining->text(), "");
}

}  // namespace
}  // namespace kelvane
