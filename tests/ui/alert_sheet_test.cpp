// SPDX-License-Identifier: GPL-2.0-or-later
// Alerts: their texts, and which answer reaches the end handler.
#include <QApplication>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include "platform/foundation/strings_table.h"
#include "ui/window_test.h"

namespace kelvane {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using namespace kelvane::testing;

class AlertPanel : public WindowTest {
 protected:
  /// Runs an alert before all windows, and lets the user do something with it.
  int run(const std::function<void(QMessageBox& panel)>& user) {
    QTimer::singleShot(0, &window_, [user] {
      auto* panel = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
      ASSERT_NE(panel, nullptr);
      EXPECT_TRUE(QTest::qWaitForWindowActive(panel));
      user(*panel);
    });
    return window_.runAlertModal({.style = Alert::Style::Informational,
                                  .buttonKeys = {"updatecheckdownload", "cancelbutton"},
                                  .messageKey = "updatecheck",
                                  .informativeKey = "updatechecklong",
                                  .detail = {}});
  }
  static void clickIn(QMessageBox& panel, const char* name) {
    QTest::mouseClick(panel.findChild<QPushButton*>(name), Qt::LeftButton);
  }
};

TEST_F(AlertPanel, ShowsTheTextsOfItsKeysBeforeAllWindows) {
  run([this](QMessageBox& panel) {
    EXPECT_EQ(panel.windowModality(), Qt::ApplicationModal);
    EXPECT_EQ(panel.parentWidget(), &window_);
    EXPECT_EQ(panel.icon(), QMessageBox::Information);
    EXPECT_EQ(panel.text().toStdString(), localizedString("updatecheck"));
    EXPECT_EQ(panel.informativeText().toStdString(), localizedString("updatechecklong"));
    clickIn(panel, "alertButton1");
  });
  EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
}

TEST_F(AlertPanel, GivesTheButtonThatEndedIt) {
  EXPECT_EQ(run([](QMessageBox& panel) { clickIn(panel, "alertButton0"); }), 1000);
  EXPECT_EQ(run([](QMessageBox& panel) { clickIn(panel, "alertButton1"); }), 1001);
}

TEST_F(AlertPanel, ReturnIsTheFirstButtonEscapeAndClosingTheLast) {
  EXPECT_EQ(run([](QMessageBox& panel) { QTest::keyClick(&panel, Qt::Key_Return); }), 1000);
  EXPECT_EQ(run([](QMessageBox& panel) { QTest::keyClick(&panel, Qt::Key_Escape); }), 1001);
  EXPECT_EQ(run([](QMessageBox& panel) { panel.close(); }), 1001);
}

TEST_F(AlertPanel, OfAnApplicationWhoseWindowIsHiddenStandsOnItsOwn) {
  window_.allowClosing();
  window_.hide();
  EXPECT_EQ(run([](QMessageBox& panel) {
              EXPECT_EQ(panel.parentWidget(), nullptr);
              clickIn(panel, "alertButton0");
            }),
            1000);
}

class AlertSheet : public WindowTest {
 protected:
  void begin(Alert alert) {
    window_.beginAlertSheet(alert, [this](int returnCode) {
      visibleAtEnd_ = sheet() != nullptr;
      codes_.push_back(returnCode);
    });
    ASSERT_NE(sheet(), nullptr);
  }

  void beginErase() {
    begin({.style = Alert::Style::Warning,
           .buttonKeys = {"Erase", "Cancel"},
           .messageKey = "attempteraseshort",
           .informativeKey = "attempteraselong",
           .detail = {}});
  }

  void beginInstall() {
    begin({.style = Alert::Style::Critical,
           .buttonKeys = {"Install", "Quit"},
           .messageKey = "InstallationIncomplete",
           .informativeKey = "InstallationIncompleteLong",
           .detail = {}});
  }

  QMessageBox* sheet() { return qobject_cast<QMessageBox*>(openSheet("alertSheet")); }
  QPushButton* button(const char* name) { return sheet()->findChild<QPushButton*>(name); }

  std::vector<int> codes_;
  bool visibleAtEnd_ = false;
};

TEST_F(AlertSheet, ShowsTheTextsOfItsKeysOverTheWindow) {
  beginErase();
  EXPECT_EQ(sheet()->windowModality(), Qt::WindowModal);
  EXPECT_EQ(sheet()->parentWidget(), &window_);
  EXPECT_EQ(sheet()->text().toStdString(), localizedString("attempteraseshort"));
  EXPECT_EQ(sheet()->informativeText().toStdString(), localizedString("attempteraselong"));
  EXPECT_EQ(button("alertButton0")->text().toStdString(), localizedString("Erase"));
  EXPECT_EQ(button("alertButton1")->text().toStdString(), localizedString("Cancel"));
}

TEST_F(AlertSheet, DoesNotWaitForTheUser) {
  beginErase();
  EXPECT_THAT(codes_, IsEmpty());
}

TEST_F(AlertSheet, FirstButtonIs1000AndTheSheetHasGoneWhenItIsHeard) {
  beginErase();
  click(button("alertButton0"));
  EXPECT_THAT(codes_, ElementsAre(1000));
  EXPECT_FALSE(visibleAtEnd_);
}

TEST_F(AlertSheet, SecondButtonIs1001) {
  beginErase();
  click(button("alertButton1"));
  EXPECT_THAT(codes_, ElementsAre(1001));
}

TEST_F(AlertSheet, EscapeAndClosingCountAsTheLastButton) {
  beginErase();
  QTest::keyClick(sheet(), Qt::Key_Escape);
  EXPECT_THAT(codes_, ElementsAre(1001));
  beginErase();
  sheet()->close();
  EXPECT_THAT(codes_, ElementsAre(1001, 1001));
}

TEST_F(AlertSheet, ReturnAtAWarningWithAChoiceTakesTheOneThatChangesNothing) {
  beginErase();
  QTest::keyClick(sheet(), Qt::Key_Return);
  EXPECT_THAT(codes_, ElementsAre(1001));
}

TEST_F(AlertSheet, ReturnAtOtherAlertsTakesTheFirstButton) {
  beginInstall();
  QTest::keyClick(sheet(), Qt::Key_Return);
  EXPECT_THAT(codes_, ElementsAre(1000));
}

TEST_F(AlertSheet, SingleButtonIsPressedByEscapeAndReturnAlike) {
  const Alert alert{.style = Alert::Style::Warning,
                    .buttonKeys = {"OK"},
                    .messageKey = "Unmountfailed",
                    .informativeKey = "Unmountfailedlong",
                    .detail = {}};
  begin(alert);
  QTest::keyClick(sheet(), Qt::Key_Escape);
  begin(alert);
  QTest::keyClick(sheet(), Qt::Key_Return);
  EXPECT_THAT(codes_, ElementsAre(1000, 1000));
}

TEST_F(AlertSheet, WithoutAnEndHandlerItJustCloses) {
  window_.beginAlertSheet({.style = Alert::Style::Warning,
                           .buttonKeys = {"OK"},
                           .messageKey = "CDBurnError",
                           .informativeKey = "CDBurnErrorLong",
                           .detail = {}},
                          {});
  ASSERT_NE(sheet(), nullptr);
  click(button("alertButton0"));
  EXPECT_EQ(sheet(), nullptr);
}

TEST_F(AlertSheet, EndHandlerMayOpenTheNextAlert) {
  window_.beginAlertSheet({.style = Alert::Style::Warning,
                           .buttonKeys = {"OK"},
                           .messageKey = "CDBurnError",
                           .informativeKey = {},
                           .detail = {}},
                          [this](int) { beginErase(); });
  click(button("alertButton0"));
  ASSERT_NE(sheet(), nullptr);
  EXPECT_EQ(sheet()->text().toStdString(), localizedString("attempteraseshort"));
}

TEST_F(AlertSheet, DetailStandsInItsOwnParagraphAsPlainText) {
  begin({.style = Alert::Style::Warning,
         .buttonKeys = {"OK"},
         .messageKey = "CDBurnError",
         .informativeKey = "CDBurnErrorLong",
         .detail = "<b>write error</b> %@\n"});
  const QString text = sheet()->informativeText();
  EXPECT_TRUE(text.startsWith(QString::fromStdString(localizedString("CDBurnErrorLong")) + "\n\n"));
  EXPECT_TRUE(text.endsWith("<b>write error</b> %@")) << text.toStdString();
  for (const QLabel* label : sheet()->findChildren<QLabel*>()) {
    if (label->text().isEmpty()) continue;
    EXPECT_EQ(label->textFormat(), Qt::PlainText);
  }
}

TEST_F(AlertSheet, EndlessDetailIsCut) {
  begin({.style = Alert::Style::Warning,
         .buttonKeys = {"OK"},
         .messageKey = "CreateTrackAbortedWithError",
         .informativeKey = "CreateTrackAbortedWithErrorLong",
         .detail = std::string(100000, 'x')});
  EXPECT_LT(sheet()->informativeText().size(), 2000);
  EXPECT_TRUE(sheet()->informativeText().endsWith(QChar(0x2026)));
}

TEST_F(AlertSheet, WindowCanEndUnderAnOpenAlert) {
  auto window = std::make_unique<MainWindow>();
  window->makeKeyAndOrderFront();
  window->beginAlertSheet({.style = Alert::Style::Warning,
                           .buttonKeys = {"OK"},
                           .messageKey = "CDBurnError",
                           .informativeKey = {},
                           .detail = {}},
                          [this](int returnCode) { codes_.push_back(returnCode); });
  window.reset();
  EXPECT_THAT(codes_, IsEmpty());
}

}  // namespace
}  // namespace kelvane
