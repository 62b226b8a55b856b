// SPDX-License-Identifier: GPL-2.0-or-later
// The four content views: where they lie, how they slide, and that what is out of sight is out of
// reach. Time passes by a clock that the test moves.
#include <QApplication>
#include <QLabel>
#include <QListView>
#include <QPushButton>

#include "platform/foundation/strings_table.h"
#include "ui/motion.h"
#include "ui/sliding_area.h"
#include "ui/stepped_clock.h"
#include "ui/window_test.h"

namespace kelvane {
namespace {

using namespace kelvane::testing;

class ContentViews : public WindowTest {
 protected:
  const SlidingArea& area() const { return window_.contentArea(); }

  /// Lets more time pass than any movement takes. Whether all have come to their ends then.
  bool comeToRest() {
    constexpr int kFarTooLong = 10000;
    clock_.pass(0);
    clock_.pass(kFarTooLong);
    return !area().isMoving(ContentView::Message) && !area().isMoving(ContentView::DiskScroll) &&
           !area().isMoving(ContentView::MountedItem) && !area().isMoving(ContentView::Burn);
  }

  void showMounted(Movement movement) {
    window_.setFrame(ContentView::Message, kLeftOfWindow, movement);
    window_.setFrame(ContentView::DiskScroll, kLeftOfWindow, movement);
    window_.setFrame(ContentView::MountedItem, kInWindow, movement);
  }

  SteppedClock clock_;
};

TEST_F(ContentViews, ListAndMessageLieInTheWindowAndTheOthersToItsRightAtFirst) {
  EXPECT_EQ(area().currentFrame(ContentView::Message), kInWindow);
  EXPECT_EQ(area().currentFrame(ContentView::DiskScroll), kInWindow);
  EXPECT_EQ(area().currentFrame(ContentView::MountedItem), kRightOfWindow);
  EXPECT_EQ(area().currentFrame(ContentView::Burn), kRightOfWindow);
}

TEST_F(ContentViews, LieOverEachOtherInTheOrderInWhichTheyWereAdded) {
  std::vector<std::string> views;
  for (const QObject* view : area().children()) {
    if (view->isWidgetType()) views.push_back(view->objectName().toStdString());
  }
  EXPECT_THAT(views, ::testing::ElementsAre("burnView", "mountedItemView", "messageView",
                                            "diskScrollView"));
}

TEST_F(ContentViews, FrameInWindowIsDrawn33PixelsAboveTheLowerEdgeAndFillsTheWidth) {
  const QWidget* list = child<QWidget>("diskScrollView");
  const QPoint lowerLeft = list->mapTo(&window_, QPoint(0, list->height()));
  EXPECT_EQ(lowerLeft, QPoint(0, window_.height() - 33));
  EXPECT_EQ(list->size(), QSize(402, 86));
  EXPECT_EQ(window_.width(), 402);
}

TEST_F(ContentViews, DirectMoveIsThereAtOnce) {
  window_.setAnimationDuration(0.6);
  showMounted(Movement::Direct);
  EXPECT_EQ(area().currentFrame(ContentView::MountedItem), kInWindow);
  EXPECT_EQ(area().currentFrame(ContentView::DiskScroll), kLeftOfWindow);
  EXPECT_FALSE(area().isMoving(ContentView::MountedItem));
  EXPECT_EQ(child<QWidget>("mountedItemView")->pos(), QPoint(0, 0));
  EXPECT_EQ(child<QWidget>("diskScrollView")->pos(), QPoint(-402, 0));
}

TEST_F(ContentViews, AnimatedMovePassesThroughFramesInBetweenAndEndsWhereItWasSentTo) {
  window_.setAnimationDuration(0.6);
  showMounted(Movement::Animated);
  EXPECT_EQ(area().targetFrame(ContentView::MountedItem), kInWindow);
  clock_.pass(0);
  double before = kRightOfWindow.x;
  for (int millisecond = 100; millisecond < 600; millisecond += 100) {
    clock_.pass(100);
    const double x = area().currentFrame(ContentView::MountedItem).x;
    EXPECT_LT(x, before) << "it stood still or went back at " << millisecond;
    EXPECT_GT(x, kInWindow.x) << "it was there already at " << millisecond;
    before = x;
  }
  ASSERT_TRUE(comeToRest());
  EXPECT_EQ(area().currentFrame(ContentView::MountedItem), kInWindow);
  EXPECT_EQ(area().currentFrame(ContentView::DiskScroll), kLeftOfWindow);
  EXPECT_EQ(area().currentFrame(ContentView::Message), kLeftOfWindow);
}

TEST_F(ContentViews, WhereTheDesktopWantsLessMotionEveryMoveIsDirect) {
  setLessMotionIsWanted(true);
  window_.setAnimationDuration(0.6);
  window_.setFrame(ContentView::MountedItem, kInWindow, Movement::Animated);
  EXPECT_FALSE(window_.contentArea().isMoving(ContentView::MountedItem));
  EXPECT_EQ(window_.contentArea().currentFrame(ContentView::MountedItem), kInWindow);
  setLessMotionIsWanted(false);
  window_.setFrame(ContentView::MountedItem, kRightOfWindow, Movement::Animated);
  EXPECT_TRUE(window_.contentArea().isMoving(ContentView::MountedItem));
}

TEST_F(ContentViews, DirectMoveEndsAnAnimationThatIsStillRunning) {
  window_.setAnimationDuration(0.6);
  showMounted(Movement::Animated);
  ASSERT_TRUE(area().isMoving(ContentView::MountedItem));
  window_.setFrame(ContentView::MountedItem, kRightOfWindow, Movement::Direct);
  EXPECT_FALSE(area().isMoving(ContentView::MountedItem));
  ASSERT_TRUE(comeToRest());
  EXPECT_EQ(area().currentFrame(ContentView::MountedItem), kRightOfWindow);
}

TEST_F(ContentViews, SecondAnimatedMoveStartsFromWhereTheFirstHasCome) {
  window_.setAnimationDuration(0.6);
  window_.setFrame(ContentView::MountedItem, kInWindow, Movement::Animated);
  clock_.pass(0);
  clock_.pass(300);
  const double turned = area().currentFrame(ContentView::MountedItem).x;
  ASSERT_LT(turned, 300);
  window_.setFrame(ContentView::MountedItem, kRightOfWindow, Movement::Animated);
  EXPECT_LE(area().currentFrame(ContentView::MountedItem).x, turned + 1);
  ASSERT_TRUE(comeToRest());
  EXPECT_EQ(area().currentFrame(ContentView::MountedItem), kRightOfWindow);
}

TEST_F(ContentViews, WhatIsParkedOutOfSightIsHiddenFromKeyboardAndScreenReader) {
  EXPECT_FALSE(child<QWidget>("mountedItemView")->isVisible());
  EXPECT_FALSE(child<QWidget>("burnView")->isVisible());
  window_.setAnimationDuration(0.05);
  showMounted(Movement::Animated);
  EXPECT_TRUE(child<QWidget>("mountedItemView")->isVisible());
  EXPECT_TRUE(child<QWidget>("diskScrollView")->isVisible()) << "it is still sliding out";
  ASSERT_TRUE(comeToRest());
  EXPECT_TRUE(child<QWidget>("mountedItemView")->isVisible());
  EXPECT_FALSE(child<QWidget>("diskScrollView")->isVisible());
  EXPECT_FALSE(child<QWidget>("messageView")->isVisible());
}

TEST_F(ContentViews, HiddenViewStaysHiddenWhereverItSlides) {
  window_.setHidden(HideableView::Message, true);
  EXPECT_FALSE(child<QWidget>("messageView")->isVisible());
  window_.setFrame(ContentView::Message, kLeftOfWindow, Movement::Direct);
  window_.setFrame(ContentView::Message, kInWindow, Movement::Direct);
  EXPECT_FALSE(child<QWidget>("messageView")->isVisible());
  window_.setHidden(HideableView::Message, false);
  EXPECT_TRUE(child<QWidget>("messageView")->isVisible());
}

TEST_F(ContentViews, ViewThatIsShownWhileParkedAppearsOnlyWhenItComesBack) {
  window_.setHidden(HideableView::DiskScroll, true);
  window_.setFrame(ContentView::DiskScroll, kLeftOfWindow, Movement::Direct);
  window_.setHidden(HideableView::DiskScroll, false);
  EXPECT_FALSE(child<QWidget>("diskScrollView")->isVisible());
  window_.setFrame(ContentView::DiskScroll, kInWindow, Movement::Direct);
  EXPECT_TRUE(child<QWidget>("diskScrollView")->isVisible());
}

TEST_F(ContentViews, DiscTableIsHiddenByItselfInsideItsScrollView) {
  window_.setHidden(HideableView::DiskTable, true);
  EXPECT_TRUE(child<QWidget>("diskScrollView")->isVisible());
  EXPECT_FALSE(child<QListView>("diskTableView")->isVisible());
  window_.setHidden(HideableView::DiskTable, false);
  EXPECT_TRUE(child<QListView>("diskTableView")->isVisible());
}

TEST_F(ContentViews, TheTableThatALoadingDiscHasHiddenIsThereAgainWithTheList) {
  const auto* table = child<QWidget>("diskTableView");
  window_.setHidden(HideableView::DiskTable, true);
  window_.setHidden(HideableView::DiskScroll, true);
  EXPECT_TRUE(table->isHidden()) << "it is hidden by itself, not with what scrolls it";
  window_.setHidden(HideableView::DiskScroll, false);
  EXPECT_FALSE(table->isHidden());
}

TEST_F(ContentViews, OpenButtonIsHiddenAndShownAndBearsItsCaption) {
  auto* button = child<QPushButton>("openButton");
  window_.setHidden(HideableView::OpenButton, true);
  EXPECT_FALSE(button->isVisible());
  window_.setHidden(HideableView::OpenButton, false);
  EXPECT_TRUE(button->isVisible());
  window_.setOpenButtonCaption("&Close && burn");
  EXPECT_EQ(button->text(), "&Close && burn");
  EXPECT_EQ(button->accessibleName(), "Close & burn");
  click(button);
  EXPECT_THAT(actions_.calls, ::testing::ElementsAre("mountBurnFS"));
}

TEST_F(ContentViews, FilesCanBeShownOnlyWhileTheOpenDiscIsInSight) {
  auto* button = child<QPushButton>("showDiskButton");
  EXPECT_FALSE(button->isVisible());
  showMounted(Movement::Direct);
  ASSERT_TRUE(button->isVisible());
  click(button);
  EXPECT_THAT(actions_.calls, ::testing::ElementsAre("showDisk"));
  window_.setFrame(ContentView::MountedItem, kLeftOfWindow, Movement::Direct);
  EXPECT_FALSE(button->isVisible());
}

TEST_F(ContentViews, OpenButtonDoesNothingWhileTheBurnViewIsInSight) {
  window_.setFrame(ContentView::Burn, kInWindow, Movement::Direct);
  auto* button = child<QPushButton>("openButton");
  click(button);
  EXPECT_TRUE(actions_.calls.empty());
  window_.setFrame(ContentView::Burn, kRightOfWindow, Movement::Direct);
  click(button);
  EXPECT_THAT(actions_.calls, ::testing::ElementsAre("mountBurnFS"));
}

TEST_F(ContentViews, HeaderSpeaksOfTheDiscListUntilItIsToldOtherwise) {
  EXPECT_EQ(child<QLabel>("headerLineTextField")->text().toStdString(),
            localizedString("headerDisksAvail"));
}

TEST_F(ContentViews, TextsReachTheirFields) {
  window_.setHeaderLine("header");
  window_.setMessage("message");
  window_.setVolumeNameField("volume <b>name</b>");
  window_.setDeviceNameField("CDRW in drive");
  window_.setSizeInformationField("12 MB free");
  window_.setBurnMessage("burning");
  clock_.pass(0);
  clock_.pass(500);  // It has slid out with its old text then.
  EXPECT_EQ(child<QLabel>("headerLineTextField")->text(), "header");
  EXPECT_EQ(child<QLabel>("messageTextField")->text(), "message");
  EXPECT_EQ(child<QLabel>("volumeNameField")->text(), "volume <b>name</b>");
  EXPECT_EQ(child<QLabel>("deviceNameField")->text(), "CDRW in drive");
  EXPECT_EQ(child<QLabel>("sizeInformationField")->text(), "12 MB free");
  EXPECT_EQ(child<QLabel>("burnMessageTextField")->text(), "burning");
}

TEST_F(ContentViews, NamesFromDiscsAreNeverTakenForMarkup) {
  for (const char* name : {"headerLineTextField", "messageTextField", "volumeNameField",
                           "deviceNameField", "sizeInformationField", "burnMessageTextField"}) {
    EXPECT_EQ(child<QLabel>(name)->textFormat(), Qt::PlainText) << name;
  }
}

TEST_F(ContentViews, WholeWindowGrowsWithALargePlatformFont) {
  QFont large = QApplication::font();
  large.setPixelSize(28);
  window_.setFont(large);
  QCoreApplication::processEvents();
  EXPECT_EQ(child<QWidget>("contentArea")->width(), 804);
  EXPECT_EQ(child<QWidget>("diskScrollView")->size(), QSize(804, 172));
  EXPECT_EQ(area().currentFrame(ContentView::DiskScroll), kInWindow) << "frames stay in points";
}

}  // namespace
}  // namespace kelvane
