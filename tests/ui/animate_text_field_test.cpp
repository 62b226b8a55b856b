// SPDX-License-Identifier: GPL-2.0-or-later
// The field whose text changes by sliding, by a clock that the test moves.
#include "ui/animate_text_field.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QProxyStyle>
#include <QTest>
#include <set>
#include <thread>

#include "ui/stepped_clock.h"
#include "ui/view_animation.h"

namespace kelvane {
namespace {

using ::testing::ElementsAre;
using testing::SteppedClock;

constexpr QRect kFrame{10, 5, 200, 30};
constexpr QRect kOutOfSight{-190, 5, 200, 30};

class AnimateText : public ::testing::Test {
 protected:
  AnimateText() {
    background_.resize(220, 40);
    field_.setRestingFrame(kFrame);
    background_.show();
    EXPECT_TRUE(QTest::qWaitForWindowExposed(&background_));
  }

  std::string text() const { return field_.text().toStdString(); }

  SteppedClock clock_;
  QWidget background_;
  AnimateTextField field_{"Available discs", &background_};
};

TEST_F(AnimateText, SlidesOutToTheLeftByItsOwnWidthAndComesBackWithTheNewText) {
  field_.setStringValue("Opening");
  EXPECT_EQ(field_.geometry(), kFrame) << "the slide begins with the event loop";
  clock_.pass(0);
  EXPECT_TRUE(field_.isSliding());
  clock_.pass(499);
  EXPECT_EQ(text(), "Available discs");
  clock_.pass(1);
  EXPECT_EQ(field_.geometry(), kOutOfSight);
  EXPECT_EQ(text(), "Opening");
  clock_.pass(500);
  EXPECT_EQ(field_.geometry(), kFrame);
  EXPECT_EQ(text(), "Opening");
  EXPECT_FALSE(field_.isSliding());
}

TEST_F(AnimateText, BeginsAndEndsSlowlyAndIsHalfwayAtHalfTheTime) {
  field_.setStringValue("Opening");
  clock_.pass(0);
  clock_.pass(40);
  const int first = kFrame.x() - field_.x();
  clock_.pass(200);
  const int nearMiddle = kFrame.x() - field_.x();
  clock_.pass(40);
  const int behindMiddle = kFrame.x() - field_.x();
  EXPECT_GT(first, 0);
  EXPECT_LT(first, 200 * 40 / 500) << "slower than a steady slide";
  EXPECT_LT(nearMiddle, 100);
  EXPECT_GT(behindMiddle, 100);
  EXPECT_GT(behindMiddle - nearMiddle, 200 * 40 / 500) << "faster than a steady slide";
  clock_.pass(200);
  EXPECT_LT(field_.x() - kOutOfSight.x(), 200 * 20 / 500 + 1);
}

TEST_F(AnimateText, MovesTwentyFiveTimesASecond) {
  field_.setStringValue("Opening");
  clock_.pass(0);
  std::set<int> places;
  for (int millisecond = 0; millisecond < 499; ++millisecond) {
    places.insert(field_.x());
    clock_.pass(1);
  }
  EXPECT_EQ(places.size(), 13U) << "at 0, 40, … 480 ms";
}

TEST_F(AnimateText, TextThatIsShownAlreadyDoesNotSlide) {
  field_.setStringValue("Available discs");
  clock_.pass(0);
  EXPECT_FALSE(field_.isSliding());
  EXPECT_EQ(field_.geometry(), kFrame);
}

TEST_F(AnimateText, TextSetWhileTheOldOneSlidesOutReplacesItAtOnce) {
  field_.setStringValue("Opening");
  clock_.pass(0);
  clock_.pass(200);
  const int place = field_.x();
  field_.setStringValue("Open");
  EXPECT_EQ(text(), "Open");
  EXPECT_EQ(field_.x(), place);
  clock_.pass(300);
  EXPECT_EQ(field_.geometry(), kOutOfSight);
  EXPECT_EQ(text(), "Open") << "not the text that was set before";
  clock_.pass(500);
  EXPECT_EQ(field_.geometry(), kFrame);
}

TEST_F(AnimateText, TextSetWhileTheNewOneSlidesInReplacesItAtOnce) {
  field_.setStringValue("Opening");
  clock_.pass(0);
  clock_.pass(500);
  clock_.pass(200);
  field_.setStringValue("Open");
  EXPECT_EQ(text(), "Open");
  clock_.pass(300);
  EXPECT_EQ(field_.geometry(), kFrame);
  EXPECT_FALSE(field_.isSliding());
  EXPECT_EQ(text(), "Open");
}

TEST_F(AnimateText, OldTextSetAgainWhileItSlidesOutComesBack) {
  field_.setStringValue("Opening");
  clock_.pass(0);
  clock_.pass(200);
  field_.setStringValue("Available discs");
  clock_.pass(300);
  EXPECT_EQ(text(), "Available discs");
  clock_.pass(500);
  EXPECT_EQ(field_.geometry(), kFrame);
}

TEST_F(AnimateText, TwoTextsBeforeTheFirstSlideShowTheSecondWithOneSlide) {
  field_.setStringValue("Opening");
  field_.setStringValue("Open");
  clock_.pass(0);
  clock_.pass(500);
  EXPECT_EQ(text(), "Open");
  clock_.pass(500);
  EXPECT_FALSE(field_.isSliding());
  EXPECT_EQ(field_.geometry(), kFrame);
}

TEST_F(AnimateText, KeepsACopyOfTheText) {
  QString caption = "Opening";
  field_.setStringValue(caption);
  caption = "something else";
  clock_.pass(0);
  clock_.pass(500);
  EXPECT_EQ(text(), "Opening");
}

TEST_F(AnimateText, AnotherThreadMaySetTheText) {
  std::thread([this] { field_.setStringValue("Opening"); }).join();
  EXPECT_EQ(text(), "Available discs");
  clock_.pass(0);
  clock_.pass(200);
  std::thread([this] { field_.setStringValue("Open"); }).join();
  EXPECT_EQ(text(), "Available discs") << "shown by the main thread only";
  QCoreApplication::processEvents();
  EXPECT_EQ(text(), "Open");
  clock_.pass(300);
  clock_.pass(500);
  EXPECT_EQ(text(), "Open");
  EXPECT_EQ(field_.geometry(), kFrame);
}

TEST_F(AnimateText, FieldThatGoesAwayTakesWhatWasAskedOfItWithIt) {
  auto* gone = new AnimateTextField("", &background_);
  gone->setStringValue("Opening");
  delete gone;
  clock_.pass(500);
}

TEST_F(AnimateText, MarkAtTheBeginningDoesNothing) {
  ViewAnimation other(field_);
  field_.animation(other, 0.0);
  EXPECT_EQ(text(), "Available discs");
}

TEST_F(AnimateText, PlaceThatChangesDuringASlideIsWhereItEnds) {
  field_.setStringValue("Opening");
  clock_.pass(0);
  clock_.pass(300);
  const QRect wider(10, 5, 400, 60);
  field_.setRestingFrame(wider);
  clock_.pass(200);
  EXPECT_EQ(field_.geometry(), wider.translated(-400, 0));
  clock_.pass(500);
  EXPECT_EQ(field_.geometry(), wider);
}

TEST_F(AnimateText, TextIsSpokenBeforeItHasSlidIn) {
  field_.setStringValue("Opening");
  clock_.pass(40);
  EXPECT_EQ(text(), "Available discs");
  EXPECT_EQ(field_.accessibleName(), "Opening");
}

/// A style of a desktop whose animations are turned off.
class StillStyle : public QProxyStyle {
 public:
  int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                QStyleHintReturn* data) const override {
    if (hint == SH_Widget_Animation_Duration) return 0;
    return QProxyStyle::styleHint(hint, option, widget, data);
  }
};

TEST_F(AnimateText, WhereTheDesktopAsksForLessMotionTheTextChangesInItsPlace) {
  StillStyle still;
  field_.setStyle(&still);
  field_.setStringValue("Opening");
  QCoreApplication::processEvents();
  EXPECT_EQ(text(), "Opening");
  EXPECT_FALSE(field_.isSliding());
  EXPECT_EQ(field_.geometry(), kFrame);
  field_.setStyle(nullptr);
}

TEST(ViewAnimations, MarksAreReachedOncePerRunInTheirOrder) {
  SteppedClock clock;
  QWidget view;
  ViewAnimation animation(view);
  animation.setDuration(500);
  animation.setFrames({0, 0, 10, 10}, {100, 0, 10, 10});
  std::vector<double> reached;
  for (const double mark : {0.0, 0.5, 1.0}) {
    animation.addProgressMark(mark, [&reached](double progress) { reached.push_back(progress); });
  }
  animation.start();
  clock.pass(0);
  clock.pass(100);
  EXPECT_THAT(reached, ElementsAre(0.0));
  clock.pass(200);
  EXPECT_THAT(reached, ElementsAre(0.0, 0.5));
  clock.pass(900);
  EXPECT_THAT(reached, ElementsAre(0.0, 0.5, 1.0));
  EXPECT_EQ(view.geometry(), QRect(100, 0, 10, 10));
  animation.start();
  clock.pass(0);
  clock.pass(1000);
  EXPECT_EQ(reached.size(), 6U);
}

}  // namespace
}  // namespace kelvane
