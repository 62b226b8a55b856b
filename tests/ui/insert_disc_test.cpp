// SPDX-License-Identifier: GPL-2.0-or-later
// Inserting a disc into an emulated drive again.
#include <QMenu>
#include <QPushButton>
#include <QTest>

#include "ui/window_test.h"

namespace kelvane {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using namespace kelvane::testing;

class InsertDisc : public WindowTest {
 protected:
  void offer(const std::vector<std::string>& names) {
    window_.setInsertableDiscs(names, [this](size_t index) { inserted_.push_back(index); });
  }

  QPushButton* button() { return child<QPushButton>("insertDiscButton"); }

  std::vector<size_t> inserted_;
};

TEST_F(InsertDisc, ButtonIsHiddenWhereThereIsNothingToInsert) {
  EXPECT_FALSE(button()->isVisible());
  offer({"Holiday"});
  EXPECT_TRUE(button()->isVisible());
  offer({});
  EXPECT_FALSE(button()->isVisible());
}

TEST_F(InsertDisc, ButtonIsAwayWhileADiscIsOpenOrBeingBurned) {
  offer({"Holiday"});
  window_.setFrame(ContentView::MountedItem, kInWindow, Movement::Direct);
  EXPECT_FALSE(button()->isVisible());
  window_.setFrame(ContentView::MountedItem, kLeftOfWindow, Movement::Direct);
  window_.setFrame(ContentView::Burn, kInWindow, Movement::Direct);
  EXPECT_FALSE(button()->isVisible());
  window_.setFrame(ContentView::Burn, kRightOfWindow, Movement::Direct);
  EXPECT_TRUE(button()->isVisible());
}

TEST_F(InsertDisc, SingleDiscIsInsertedByOneClick) {
  offer({"Holiday"});
  click(button());
  EXPECT_THAT(inserted_, ElementsAre(0U));
}

TEST_F(InsertDisc, SingleDiscIsInsertedByReturn) {
  offer({"Holiday"});
  button()->setFocus();
  pressKey(Qt::Key_Return);
  EXPECT_THAT(inserted_, ElementsAre(0U));
}

TEST_F(InsertDisc, SeveralDiscsAreOfferedInAMenu) {
  offer({"Holiday", "Music & more"});
  QMenu* menu = button()->menu();
  ASSERT_NE(menu, nullptr);
  ASSERT_EQ(menu->actions().size(), 2);
  EXPECT_TRUE(menu->actions().at(1)->text().contains("Music && more"));
  EXPECT_THAT(inserted_, IsEmpty());
  menu->popup(QPoint());
  QTest::mouseClick(menu, Qt::LeftButton, {}, menu->actionGeometry(menu->actions().at(1)).center());
  EXPECT_THAT(inserted_, ElementsAre(1U));
}

TEST_F(InsertDisc, MenuGoesWhenOneDiscIsLeft) {
  offer({"Holiday", "Music"});
  offer({"Music"});
  EXPECT_EQ(button()->menu(), nullptr);
  click(button());
  EXPECT_THAT(inserted_, ElementsAre(0U));
}

TEST_F(InsertDisc, MenuEntryMayTakeItsOwnMenuAway) {
  window_.setInsertableDiscs({"Holiday", "Music"}, [this](size_t index) {
    offer({"Holiday"});
    inserted_.push_back(index);
  });
  button()->menu()->actions().at(1)->trigger();
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  EXPECT_THAT(inserted_, ElementsAre(1U));
  EXPECT_EQ(button()->menu(), nullptr);
}

TEST_F(InsertDisc, HandlerMayTakeTheOfferBackWhileItRuns) {
  window_.setInsertableDiscs({"Holiday"}, [this](size_t index) {
    inserted_.push_back(index);
    window_.setInsertableDiscs({}, {});
    inserted_.push_back(index);
  });
  click(button());
  EXPECT_THAT(inserted_, ElementsAre(0U, 0U));
  EXPECT_FALSE(button()->isVisible());
}

}  // namespace
}  // namespace kelvane
