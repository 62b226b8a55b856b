// SPDX-License-Identifier: GPL-2.0-or-later
// Which disc the question whether to erase means, from being put to being answered.
#include <QContextMenuEvent>
#include <QListView>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>

#include "foundation/turn_until.h"
#include "ui/sample_records.h"
#include "ui/window_test.h"

namespace kelvane {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using namespace kelvane::testing;

constexpr int kErase = 1000;
constexpr int kCancel = 1001;

/// Puts the question as the controller does, and notes what disc each answer meant.
class AskingActions : public RecordedActions {
 public:
  AskingActions(MainWindow& window) : RecordedActions(window.mediaController()), window_(window) {}

  void attemptErase() override {
    Alert alert;
    alert.style = Alert::Style::Warning;
    alert.buttonKeys = {"Erase", "Cancel"};
    alert.messageKey = "attempteraseshort";
    alert.informativeKey = "attempteraselong";
    window_.beginAlertSheet(alert, [this](int answer) {
      answers.push_back(answer);
      rows.push_back(window_.mediaController().selectionIndex());
    });
  }
  bool discIsTaken() const override { return isTaken; }

  std::vector<int> answers;
  std::vector<std::optional<size_t>> rows;  ///< What was selected at each answer.
  bool isTaken = false;

 private:
  MainWindow& window_;
};

class EraseQuestionTest : public WindowTest {
 protected:
  EraseQuestionTest() {
    window_.setActions(&asking_);
    list({disc("letters"), fullDisc("holiday"), disc("music")});
    media().setSelectionIndex(0);
  }

  MediaController& media() { return window_.mediaController(); }

  static DeviceRecord disc(const std::string& identity) {
    DeviceRecord record = usableRecord(identity);
    record.mediaIdentity = identity;
    return record;
  }
  static DeviceRecord fullDisc(const std::string& identity) {
    DeviceRecord record = disc(identity);
    record.unsupportedString = "The disc is full";
    return record;
  }

  /// Makes the list anew, as a scan does.
  void list(const std::vector<DeviceRecord>& records) {
    media().removeArrangedObjects();
    media().addObjects(records);
  }

  QMenu* menuOfRow(int row) {
    auto* view = child<QListView>("diskTableView");
    const QPoint where = view->visualRect(view->model()->index(row, 0)).center();
    QContextMenuEvent event(QContextMenuEvent::Mouse, where, view->viewport()->mapToGlobal(where));
    QCoreApplication::sendEvent(view->viewport(), &event);
    return view->findChild<QMenu*>("diskMenu");
  }

  void askByMenuOfRow(int row) {
    QMenu* menu = menuOfRow(row);
    ASSERT_NE(menu, nullptr);
    menu->actions().front()->trigger();
    menu->close();
    ASSERT_NE(question(), nullptr);
  }

  QDialog* question() { return openSheet("alertSheet"); }
  void answer(const char* button) { click(question()->findChild<QPushButton*>(button)); }
  void answerErase() { answer("alertButton0"); }
  void answerCancel() { answer("alertButton1"); }

  AskingActions asking_{window_};
};

TEST_F(EraseQuestionTest, MeansItsDiscAndGivesTheSelectionBackWhereItIsAnsweredByNo) {
  askByMenuOfRow(1);
  EXPECT_EQ(media().selectionIndex(), 1U);
  answerCancel();
  EXPECT_THAT(asking_.answers, ElementsAre(kCancel));
  EXPECT_EQ(media().selectionIndex(), 0U) << "the button that opens would be without effect";
}

TEST_F(EraseQuestionTest, MeansItsDiscWhereItIsAnsweredByYes) {
  askByMenuOfRow(1);
  answerErase();
  EXPECT_THAT(asking_.answers, ElementsAre(kErase));
  EXPECT_THAT(asking_.rows, ElementsAre(1U));
  EXPECT_EQ(media().selectionIndex(), 0U);
}

TEST_F(EraseQuestionTest, LeavesNothingSelectedWhereNothingWas) {
  media().setSelectionIndex(std::nullopt);
  askByMenuOfRow(1);
  answerCancel();
  EXPECT_EQ(media().selectionIndex(), std::nullopt);
}

TEST_F(EraseQuestionTest, GoesWhereAnotherDiscIsInItsPlace) {
  askByMenuOfRow(1);
  list({disc("letters"), disc("backup"), disc("music")});
  test::turnUntil([this] { return question() == nullptr; });
  EXPECT_THAT(asking_.answers, ElementsAre(kCancel));
  EXPECT_EQ(media().selectionIndex(), 1U) << "the new list is the scan's";
}

TEST_F(EraseQuestionTest, GoesWhereAScanSelectsAnotherDisc) {
  askByMenuOfRow(1);
  media().setSelectionIndex(2);
  test::turnUntil([this] { return question() == nullptr; });
  EXPECT_THAT(asking_.answers, ElementsAre(kCancel));
  EXPECT_EQ(media().selectionIndex(), 2U);
}

TEST_F(EraseQuestionTest, StaysWhereTheListIsMadeAnewWithTheSameDisc) {
  askByMenuOfRow(1);
  list({disc("letters"), fullDisc("holiday"), disc("music")});
  QCoreApplication::processEvents();
  ASSERT_NE(question(), nullptr);
  answerErase();
  EXPECT_THAT(asking_.answers, ElementsAre(kErase));
}

TEST_F(EraseQuestionTest, DoesNotSelectWhatHasComeInThePlaceOfTheDiscBefore) {
  askByMenuOfRow(1);
  list({disc("backup"), fullDisc("holiday"), disc("music")});
  answerCancel();
  EXPECT_EQ(media().selectionIndex(), 1U);
}

TEST_F(EraseQuestionTest, IsPutAboutNoOtherDiscWhileOneIsTaken) {
  asking_.isTaken = true;
  EXPECT_EQ(menuOfRow(1), nullptr);
  click(child<QPushButton>("eraseButton"));
  ASSERT_NE(question(), nullptr);
  answerErase();
  EXPECT_THAT(asking_.rows, ElementsAre(0U));
}

TEST_F(EraseQuestionTest, MenuThatWasOpenWhenADiscWasTakenPutsNone) {
  QMenu* menu = menuOfRow(1);
  ASSERT_NE(menu, nullptr);
  asking_.isTaken = true;
  menu->actions().front()->trigger();
  EXPECT_EQ(question(), nullptr);
  EXPECT_EQ(media().selectionIndex(), 0U);
}

TEST_F(EraseQuestionTest, NoOtherDiscCanBeSelectedWhileOneIsTaken) {
  asking_.isTaken = true;
  clickRow(2);
  EXPECT_EQ(media().selectionIndex(), 0U);
  doubleClickRow(2);
  EXPECT_THAT(asking_.calls, IsEmpty());
  asking_.isTaken = false;
  clickRow(2);
  EXPECT_EQ(media().selectionIndex(), 2U);
}

}  // namespace
}  // namespace kelvane
