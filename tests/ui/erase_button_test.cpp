// SPDX-License-Identifier: GPL-2.0-or-later
// The ways to ask for an erase: which disc they mean, and when there is none that they could mean.
#include <QContextMenuEvent>
#include <QListView>
#include <QMenu>
#include <QPushButton>
#include <QTest>

#include "ui/sample_records.h"
#include "ui/window_test.h"

namespace kelvane {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using namespace kelvane::testing;

class EraseButton : public WindowTest {
 protected:
  QPushButton* button() { return child<QPushButton>("eraseButton"); }
  MediaController& media() { return window_.mediaController(); }

  static DeviceRecord fullRewritableRecord() {
    DeviceRecord record = usableRecord("Full");
    record.unsupportedString = "The disc is full";
    return record;
  }

  QMenu* menuOfRow(int row) {
    auto* list = child<QListView>("diskTableView");
    const QPoint where = list->visualRect(list->model()->index(row, 0)).center();
    QContextMenuEvent event(QContextMenuEvent::Mouse, where, list->viewport()->mapToGlobal(where));
    QCoreApplication::sendEvent(list->viewport(), &event);
    return list->findChild<QMenu*>("diskMenu");
  }
};

TEST_F(EraseButton, IsThereOnlyWithARewritableDiscInTheList) {
  EXPECT_FALSE(button()->isVisible());
  media().addObjects({usableRecord("Letters", "CDR")});
  EXPECT_FALSE(button()->isVisible());
  media().addObjects({usableRecord("Holiday", "CDRW")});
  EXPECT_TRUE(button()->isVisible());
  media().removeArrangedObjects();
  EXPECT_FALSE(button()->isVisible());
}

TEST_F(EraseButton, CanBePressedOnlyWhileARewritableDiscIsSelected) {
  media().addObjects({usableRecord("Letters", "CDR"), usableRecord("Holiday", "CDRW")});
  media().setSelectionIndex(0);
  EXPECT_FALSE(button()->isEnabled());
  clickRow(1);
  EXPECT_TRUE(button()->isEnabled());
  click(button());
  EXPECT_THAT(actions_.calls, ElementsAre("attemptErase"));
  EXPECT_EQ(media().selectionIndex(), 1U);
}

TEST_F(EraseButton, IsForEveryKindOfRewritableDisc) {
  for (const char* type : {"CDRW", "DVDRW", "DVDPlusRW"}) {
    media().removeArrangedObjects();
    media().addObjects({usableRecord("Holiday", type)});
    media().setSelectionIndex(0);
    EXPECT_TRUE(button()->isEnabled()) << type;
  }
}

TEST_F(EraseButton, IsNotThereForADiscThatIsStillLoading) {
  media().addObjects({loadingRecord("Loading")});
  EXPECT_FALSE(button()->isVisible());
}

TEST_F(EraseButton, IsAwayDuringABurn) {
  media().addObjects({usableRecord("Holiday")});
  media().setSelectionIndex(0);
  window_.setFrame(ContentView::Burn, kInWindow, Movement::Direct);
  EXPECT_FALSE(button()->isVisible());
  window_.setFrame(ContentView::Burn, kRightOfWindow, Movement::Direct);
  EXPECT_TRUE(button()->isVisible());
}

TEST_F(EraseButton, MeansTheOnlyRewritableDiscWhereNoneCanBeSelected) {
  media().addObjects({refusedRecord("Old", "Disc is full"), fullRewritableRecord()});
  EXPECT_TRUE(button()->isEnabled());
  click(button());
  EXPECT_THAT(actions_.calls, ElementsAre("attemptErase"));
  EXPECT_EQ(media().selectionIndex(), 1U) << "the disc in question is seen to be selected";
}

TEST_F(EraseButton, DoesNotGuessBetweenTwoDiscsThatCannotBeSelected) {
  media().addObjects({fullRewritableRecord(), fullRewritableRecord()});
  EXPECT_TRUE(button()->isVisible());
  EXPECT_FALSE(button()->isEnabled());
}

TEST_F(EraseButton, CanBeReachedByItsKey) {
  media().addObjects({usableRecord("Holiday")});
  QTest::keyClick(&window_, Qt::Key_E, Qt::ControlModifier);
  EXPECT_THAT(actions_.calls, ElementsAre("attemptErase"));
}

TEST_F(EraseButton, MenuOfADiscThatCannotBeOpenedErasesThatDisc) {
  media().addObjects({usableRecord("Holiday"), fullRewritableRecord()});
  media().setSelectionIndex(0);
  QMenu* menu = menuOfRow(1);
  ASSERT_NE(menu, nullptr);
  ASSERT_EQ(menu->actions().size(), 1);
  menu->actions().front()->trigger();
  EXPECT_THAT(actions_.calls, ElementsAre("attemptErase"));
  EXPECT_EQ(media().selectionIndex(), 1U);
}

TEST_F(EraseButton, MenuWhoseDiscHasGoneErasesNothing) {
  media().addObjects({usableRecord("Holiday")});
  QMenu* menu = menuOfRow(0);
  ASSERT_NE(menu, nullptr);
  media().removeArrangedObjects();
  menu->actions().front()->trigger();
  EXPECT_THAT(actions_.calls, IsEmpty());
}

TEST_F(EraseButton, ThereIsNoMenuForADiscThatCannotBeErased) {
  media().addObjects({usableRecord("Letters", "CDR")});
  EXPECT_EQ(menuOfRow(0), nullptr);
}

TEST_F(EraseButton, MenuKeyOpensTheMenuOfTheRowThatTheKeyboardVisits) {
  media().addObjects({usableRecord("Letters", "CDR"), fullRewritableRecord()});
  auto* list = child<QListView>("diskTableView");
  list->setFocus();
  list->selectionModel()->setCurrentIndex(list->model()->index(1, 0),
                                          QItemSelectionModel::NoUpdate);
  QContextMenuEvent event(QContextMenuEvent::Keyboard, QPoint(1, 1), QPoint(1, 1));
  QCoreApplication::sendEvent(list->viewport(), &event);
  EXPECT_NE(list->findChild<QMenu*>("diskMenu"), nullptr);
}

}  // namespace
}  // namespace kelvane
