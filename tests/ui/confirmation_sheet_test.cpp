// SPDX-License-Identifier: GPL-2.0-or-later
// The burn confirmation sheet: its answers, its name field and its speeds.
#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>

#include "ui/burn_summary.h"
#include "ui/sample_records.h"
#include "ui/window_test.h"

namespace kelvane {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using namespace kelvane::testing;

class ConfirmationSheet : public WindowTest {
 protected:
  ConfirmationSheet() {
    actions_.endsSheetOf = &window_;
    window_.setBurnConfirmationDiskTitle("Holiday");
    window_.beginBurnConfirmationSheet();
    EXPECT_NE(sheet(), nullptr);
  }

  QDialog* sheet() { return openSheet("burnConfirmationPanel"); }
  QMessageBox* question() { return qobject_cast<QMessageBox*>(openSheet("alertSheet")); }
  QLineEdit* title() { return child<QLineEdit>("burnConfirmationPanelDiskTitle"); }

  std::vector<int> offeredSpeeds() {
    auto* popup = child<QComboBox>("burnSpeedPopupButton");
    std::vector<int> speeds;
    for (int item = 0; item < popup->count(); ++item) {
      speeds.push_back(popup->itemData(item).toInt());
    }
    return speeds;
  }
};

TEST_F(ConfirmationSheet, IsAWindowModalSheetWithTheNameReadyForTypingOverIt) {
  EXPECT_EQ(sheet()->windowModality(), Qt::WindowModal);
  EXPECT_EQ(title()->selectedText(), "Holiday");
  QTest::keyClicks(title(), "Summer");
  EXPECT_EQ(window_.burnConfirmationDiskTitle(), "Summer");
}

TEST_F(ConfirmationSheet, BurnButtonConfirmsAndTheSheetIsGone) {
  click(child<QPushButton>("burnConfirmButton"));
  EXPECT_THAT(actions_.calls, ElementsAre("burnConfirmationDidConfirm"));
  EXPECT_EQ(sheet(), nullptr);
}

TEST_F(ConfirmationSheet, LabelsLeadToTheirFieldsByTheirMnemonics) {
  auto* name = child<QLineEdit>("burnConfirmationPanelDiskTitle");
  auto* speed = child<QComboBox>("burnSpeedPopupButton");
  EXPECT_EQ(name->accessibleName(), QStringLiteral("Disc name"));
  EXPECT_EQ(speed->accessibleName(), QStringLiteral("Speed"));
  sheet()->activateWindow();
  ASSERT_TRUE(QTest::qWaitFor([this] { return QApplication::activeWindow() == sheet(); }));
  QTest::keyClick(sheet()->focusWidget(), Qt::Key_S, Qt::AltModifier);
  EXPECT_TRUE(speed->hasFocus());
  QTest::keyClick(sheet()->focusWidget(), Qt::Key_N, Qt::AltModifier);
  EXPECT_TRUE(name->hasFocus());
}

TEST_F(ConfirmationSheet, WarnsOfWhatWasDeletedAndStays) {
  BurnSummary summary;
  summary.shownStill = {"back\\slash"};
  window_.setBurnSummary(summary);
  const auto* warning = child<QWidget>("shownStillWarning");
  EXPECT_TRUE(warning->isVisible());
  EXPECT_TRUE(warning->accessibleDescription().contains(QStringLiteral("“back\\slash”")));
  EXPECT_TRUE(child<QWidget>("burnKeepButton")->isVisible());
  window_.setBurnSummary({});
  EXPECT_FALSE(warning->isVisible());
}

TEST_F(ConfirmationSheet, ReturnInTheNameFieldBurns) {
  QTest::keyClick(title(), Qt::Key_Return);
  EXPECT_THAT(actions_.calls, ElementsAre("burnConfirmationDidConfirm"));
}

TEST_F(ConfirmationSheet, DiscardButtonCancelsAndTheSheetIsGone) {
  click(child<QPushButton>("burnCancelButton"));
  EXPECT_THAT(actions_.calls, ElementsAre("burnConfirmationDidCancel"));
  EXPECT_EQ(sheet(), nullptr);
}

TEST_F(ConfirmationSheet, ReturnPressesTheButtonThatHasTheFocus) {
  auto* discard = child<QPushButton>("burnCancelButton");
  discard->setFocus();
  QTest::keyClick(discard, Qt::Key_Return);
  EXPECT_THAT(actions_.calls, ElementsAre("burnConfirmationDidCancel"));
}

TEST_F(ConfirmationSheet, StaysUntilItIsTakenAway) {
  actions_.endsSheetOf = nullptr;
  click(child<QPushButton>("burnConfirmButton"));
  EXPECT_NE(sheet(), nullptr);
  window_.endBurnConfirmationSheet();
  window_.orderOutBurnConfirmationPanel();
  EXPECT_EQ(sheet(), nullptr);
}

TEST_F(ConfirmationSheet, EscapeAsksBeforeTheChangesAreDiscarded) {
  QTest::keyClick(title(), Qt::Key_Escape);
  EXPECT_THAT(actions_.calls, IsEmpty());
  ASSERT_NE(question(), nullptr);
  EXPECT_NE(sheet(), nullptr);
  click(question()->findChild<QPushButton*>("alertButton0"));
  EXPECT_THAT(actions_.calls, ElementsAre("burnConfirmationDidCancel"));
  EXPECT_EQ(sheet(), nullptr);
}

TEST_F(ConfirmationSheet, SecondEscapeKeepsTheChangesAndTheSheet) {
  QTest::keyClick(title(), Qt::Key_Escape);
  ASSERT_NE(question(), nullptr);
  QTest::keyClick(question(), Qt::Key_Escape);
  EXPECT_THAT(actions_.calls, IsEmpty());
  EXPECT_EQ(question(), nullptr);
  EXPECT_NE(sheet(), nullptr);
  click(child<QPushButton>("burnConfirmButton"));
  EXPECT_THAT(actions_.calls, ElementsAre("burnConfirmationDidConfirm"));
}

TEST_F(ConfirmationSheet, ClosingItAsksToo) {
  sheet()->close();
  EXPECT_THAT(actions_.calls, IsEmpty());
  EXPECT_NE(question(), nullptr);
  EXPECT_NE(sheet(), nullptr);
}

TEST_F(ConfirmationSheet, QuestionIsTakenAwayWithTheSheet) {
  QTest::keyClick(title(), Qt::Key_Escape);
  ASSERT_NE(question(), nullptr);
  window_.endBurnConfirmationSheet();
  window_.orderOutBurnConfirmationPanel();
  EXPECT_EQ(window_.findChild<QDialog*>("alertSheet"), nullptr);
  EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
  EXPECT_THAT(actions_.calls, IsEmpty());
}

TEST_F(ConfirmationSheet, QuestionIsAskedAgainOverTheSheetOfTheNextDisc) {
  QTest::keyClick(title(), Qt::Key_Escape);
  window_.endBurnConfirmationSheet();
  window_.beginBurnConfirmationSheet();
  EXPECT_EQ(question(), nullptr);
  QTest::keyClick(title(), Qt::Key_Escape);
  ASSERT_NE(question(), nullptr);
  click(question()->findChild<QPushButton*>("alertButton0"));
  EXPECT_THAT(actions_.calls, ElementsAre("burnConfirmationDidCancel"));
  EXPECT_EQ(question(), nullptr);
  EXPECT_EQ(sheet(), nullptr);
}

TEST_F(ConfirmationSheet, NameFieldTakesOnlyWhatADiscNameMayHold) {
  title()->clear();
  QTest::keyClicks(title(), "a/b:c*d_e -.+9");
  EXPECT_EQ(window_.burnConfirmationDiskTitle(), "abcd_e -.+9");
  QTest::keyClicks(title(), "123456");
  EXPECT_EQ(window_.burnConfirmationDiskTitle(), "abcd_e -.+912345") << "16 characters";
}

TEST_F(ConfirmationSheet, PastedNameIsJudgedByItsLengthAndItsLastCharacter) {
  const auto paste = [this](const QString& text) {
    QApplication::clipboard()->setText(text);
    title()->clear();
    QTest::keySequence(title(), QKeySequence::Paste);
    return window_.burnConfirmationDiskTitle();
  };
  EXPECT_EQ(paste("pa/st*d"), "pa/st*d");
  EXPECT_EQ(paste("pasted/"), " ") << "it is refused, and the field stays empty";
  EXPECT_EQ(paste("1234567890123456"), "1234567890123456");
  EXPECT_EQ(paste("12345678901234567"), " ");
}

TEST_F(ConfirmationSheet, EmptiedNameShowsAStandInAndYieldsABlank) {
  title()->clear();
  EXPECT_EQ(title()->placeholderText(), "my CDROM");
  EXPECT_EQ(window_.burnConfirmationDiskTitle(), " ");
}

TEST_F(ConfirmationSheet, LongNameOfADiscIsKeptAsItIs) {
  window_.setBurnConfirmationDiskTitle("A volume name of 32 characters..");
  EXPECT_EQ(window_.burnConfirmationDiskTitle(), "A volume name of 32 characters..");
}

/// A disc that was made elsewhere may bear a name that could not be typed here.
class NameFromElsewhere : public ConfirmationSheet {
 protected:
  void preset(const QString& name) {
    window_.endBurnConfirmationSheet();
    window_.setBurnConfirmationDiskTitle(name.toStdString());
    window_.beginBurnConfirmationSheet();
    ASSERT_EQ(title()->selectedText(), name);
  }
  void press(Qt::Key key, int times = 1, Qt::KeyboardModifiers modifiers = {}) {
    for (int press = 0; press < times; ++press) QTest::keyClick(title(), key, modifiers);
  }

  const QString longName_ = QStringLiteral("Twenty characters ..");
};

TEST_F(NameFromElsewhere, IsNotTypedOverByWhatNoNameMayHold) {
  for (const char* name : {"Twenty characters ..", "Backup (2)", "Menü"}) {
    preset(QString::fromUtf8(name));
    press(Qt::Key_Slash);
    EXPECT_EQ(window_.burnConfirmationDiskTitle(), name);
    QTest::keyClicks(title(), "S/u*m");
    EXPECT_EQ(window_.burnConfirmationDiskTitle(), "Sum");
  }
}

TEST_F(NameFromElsewhere, DoesNotBecomeLongerThanItMay) {
  preset(longName_);
  press(Qt::Key_End);
  press(Qt::Key_X);
  EXPECT_EQ(title()->text(), longName_);
  press(Qt::Key_Home);
  press(Qt::Key_X);
  EXPECT_EQ(title()->text(), longName_);
}

TEST_F(NameFromElsewhere, CanBeShortenedUntilThereIsRoomAgain) {
  preset(longName_);
  press(Qt::Key_End);
  press(Qt::Key_Backspace, 3);
  EXPECT_EQ(title()->text(), "Twenty characters");
  press(Qt::Key_X);
  EXPECT_EQ(title()->text(), "Twenty characters") << "that would be 18 characters";
  press(Qt::Key_Home);
  press(Qt::Key_Delete, 7);
  EXPECT_EQ(title()->text(), "characters");
  press(Qt::Key_X, 7);
  EXPECT_EQ(title()->text(), "xxxxxxcharacters") << "16 characters";
}

TEST_F(NameFromElsewhere, CanBeShortenedPastCharactersThatCouldNotBeTyped) {
  preset(QString::fromUtf8("Grüße (2)"));
  press(Qt::Key_End);
  press(Qt::Key_Backspace, 5);
  EXPECT_EQ(title()->text(), QString::fromUtf8("Grüß"));
  press(Qt::Key_Slash);
  EXPECT_EQ(title()->text(), QString::fromUtf8("Grüß"));
  press(Qt::Key_Left, 2, Qt::ShiftModifier);
  press(Qt::Key_Slash);
  EXPECT_EQ(title()->text(), QString::fromUtf8("Grüß"));
  press(Qt::Key_U);
  EXPECT_EQ(title()->text(), "Gru");
}

TEST_F(NameFromElsewhere, ComesBackWhenTheTypingIsUndoneAndIsStillNotTypedOver) {
  preset(longName_);
  press(Qt::Key_S);
  ASSERT_EQ(title()->text(), "s");
  QTest::keySequence(title(), QKeySequence::Undo);
  EXPECT_EQ(title()->text(), longName_);
  press(Qt::Key_End);
  press(Qt::Key_X);
  EXPECT_EQ(title()->text(), longName_);
  press(Qt::Key_A, 1, Qt::ControlModifier);
  press(Qt::Key_Slash);
  EXPECT_EQ(title()->text(), longName_);
}

TEST_F(NameFromElsewhere, IsBurnedByReturnAsItIs) {
  preset(QString::fromUtf8("Grüße"));
  press(Qt::Key_Home);
  press(Qt::Key_Right, 3);
  press(Qt::Key_Return);
  EXPECT_THAT(actions_.calls, ElementsAre("burnConfirmationDidConfirm"));
  EXPECT_EQ(window_.burnConfirmationDiskTitle(), "Grüße");
}

TEST_F(ConfirmationSheet, OpensAgainAfterAnAnswer) {
  click(child<QPushButton>("burnCancelButton"));
  window_.setBurnConfirmationDiskTitle("Other");
  window_.beginBurnConfirmationSheet();
  ASSERT_NE(sheet(), nullptr);
  EXPECT_EQ(window_.burnConfirmationDiskTitle(), "Other");
}

TEST_F(ConfirmationSheet, SpeedIsTheDrivesFastestUntilTheUserChooses) {
  EXPECT_EQ(window_.burnSpeedTag(), 0);
  auto* popup = child<QComboBox>("burnSpeedPopupButton");
  popup->setFocus();
  QTest::keyClick(popup, Qt::Key_Down);
  EXPECT_EQ(window_.burnSpeedTag(), 1);
  QTest::keyClick(popup, Qt::Key_Down);
  EXPECT_EQ(window_.burnSpeedTag(), 2);
}

TEST_F(ConfirmationSheet, ChosenSpeedOutlivesTheSheet) {
  auto* popup = child<QComboBox>("burnSpeedPopupButton");
  QTest::keyClick(popup, Qt::Key_Down);
  click(child<QPushButton>("burnConfirmButton"));
  EXPECT_EQ(window_.burnSpeedTag(), 1);
}

TEST_F(ConfirmationSheet, CdIsOfferedOnlyTheSpeedsThatACdBurnCanBeToldToKeep) {
  EXPECT_THAT(offeredSpeeds(), ElementsAre(0, 1, 2));
}

TEST_F(ConfirmationSheet, DvdIsOfferedHigherSpeedsToo) {
  window_.endBurnConfirmationSheet();
  window_.mediaController().addObjects({usableRecord("Film", "DVDPlusRW")});
  window_.mediaController().setSelectionIndex(0);
  window_.beginBurnConfirmationSheet();
  EXPECT_THAT(offeredSpeeds(), ElementsAre(0, 1, 2, 4, 8));
}

}  // namespace
}  // namespace kelvane
