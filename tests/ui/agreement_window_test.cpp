// SPDX-License-Identifier: GPL-2.0-or-later
// The window of the licence agreement, with the controller that asks for it and a user who answers.
#include "ui/agreement_window.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QAccessible>
#include <QApplication>
#include <QFile>
#include <QPushButton>
#include <QScrollBar>
#include <QTest>
#include <QTextBlock>
#include <QTextBrowser>
#include <QTextDocument>
#include <QTextList>
#include <QTimer>
#include <QTranslator>
#include <set>

#include "foundation/temporary_user_defaults.h"
#include "platform/foundation/bundle.h"
#include "platform/foundation/strings_table.h"
#include "platform/foundation/user_defaults.h"
#include "services/kv_license_controller.h"
#include "ui/view_parts.h"

namespace kelvane {
namespace {

using ::testing::HasSubstr;

class Agreement : public ::testing::Test {
 protected:
  /// Shows the agreement and lets the user do something once the window is there.
  bool ask(const std::function<void()>& user) {
    QTimer::singleShot(0, &window_, [this, user] {
      EXPECT_TRUE(QTest::qWaitForWindowActive(&window_));
      user();
    });
    return controller_.showLicenseIfNeeded();
  }
  QPushButton* button(const char* name) { return window_.findChild<QPushButton*>(name); }
  QTextBrowser* text() { return window_.findChild<QTextBrowser*>("licenseTextView"); }
  void press(Qt::Key key) {
    ASSERT_NE(window_.focusWidget(), nullptr);
    QTest::keyClick(window_.focusWidget(), key);
  }
  static bool isAgreedTo() {
    return UserDefaults::standard().stringForKey("licenseShownForVersion") ==
           Bundle::mainBundle().shortVersionString();
  }

  test::TemporaryUserDefaults defaults_;
  AgreementWindow window_;
  int terminations_ = 0;
  KVLicenseController controller_{window_, [this] { ++terminations_; }};
};

TEST_F(Agreement, IsShownBeforeAllOtherWindowsUntilTheUserAgrees) {
  EXPECT_TRUE(ask([this] {
    EXPECT_TRUE(window_.isVisible());
    EXPECT_EQ(QApplication::activeModalWidget(), &window_);
    EXPECT_EQ(window_.windowModality(), Qt::ApplicationModal);
    QTest::mouseClick(button("agreeButton"), Qt::LeftButton);
  }));
  EXPECT_FALSE(window_.isVisible());
  EXPECT_TRUE(isAgreedTo());
  EXPECT_EQ(terminations_, 0);
}

TEST_F(Agreement, DisagreeQuits) {
  EXPECT_FALSE(ask([this] { QTest::mouseClick(button("disagreeButton"), Qt::LeftButton); }));
  EXPECT_EQ(terminations_, 1);
  EXPECT_FALSE(isAgreedTo());
}

TEST_F(Agreement, EscapeAndClosingCountAsDisagreement) {
  EXPECT_FALSE(ask([this] { press(Qt::Key_Escape); }));
  EXPECT_FALSE(ask([this] { EXPECT_TRUE(window_.close()); }));
  EXPECT_EQ(terminations_, 2);
  EXPECT_FALSE(window_.isVisible());
  EXPECT_FALSE(isAgreedTo());
}

TEST_F(Agreement, ReturnAgreesAndSoDoesTheSpaceBarOnItsButton) {
  EXPECT_TRUE(ask([this] { press(Qt::Key_Return); }));
  UserDefaults::standard().removeKey("licenseShownForVersion");
  EXPECT_TRUE(ask([this] {
    button("agreeButton")->setFocus();
    press(Qt::Key_Space);
  }));
  EXPECT_TRUE(isAgreedTo());
}

TEST_F(Agreement, ReturnOnDisagreeDisagrees) {
  EXPECT_FALSE(ask([this] {
    button("disagreeButton")->setFocus();
    press(Qt::Key_Return);
  }));
  EXPECT_EQ(terminations_, 1);
}

TEST_F(Agreement, IsNotShownAgainOnceItIsAgreedTo) {
  ask([this] { press(Qt::Key_Return); });
  EXPECT_TRUE(controller_.showLicenseIfNeeded());
  EXPECT_FALSE(window_.isVisible());
}

TEST_F(Agreement, IsRichTextFromTheResource) {
  ask([this] { press(Qt::Key_Return); });
  const QTextDocument& document = *text()->document();
  const QTextBlock title = document.firstBlock();
  EXPECT_EQ(title.text().toStdString(), "KelvaneFS Licence Agreement");
  EXPECT_EQ(title.blockFormat().headingLevel(), 1);
  std::set<int> headings;
  int listItems = 0;
  bool hasBold = false;
  for (QTextBlock block = title.next(); block.isValid(); block = block.next()) {
    headings.insert(block.blockFormat().headingLevel());
    if (block.textList()) ++listItems;
    for (const auto& range : block.textFormats())
      hasBold |= range.format.fontWeight() == QFont::Bold;
  }
  EXPECT_TRUE(headings.contains(2));
  EXPECT_EQ(listItems, 3);
  EXPECT_TRUE(hasBold);
  EXPECT_THAT(text()->toHtml().toStdString(), HasSubstr("href=\"https://www.gnu.org/licenses/\""));
}

TEST_F(Agreement, EachLanguageHasOneAndItNamesTheButtonsOfTheWindow) {
  for (const char* language : {"en", "de"}) {
    QTranslator table;
    ASSERT_TRUE(table.load(QStringLiteral(":/kelvanefs/strings/kelvanefs_%1.qm").arg(language)));
    const QString name = table.translate(nullptr, "LicenseResource");
    const auto path = Bundle::mainBundle().pathForResource(name.toStdString(), "html");
    ASSERT_TRUE(path.has_value()) << language;
    QFile file(QString::fromStdString(*path));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    QTextDocument document;
    document.setHtml(QString::fromUtf8(file.readAll()));
    const QString all = document.toPlainText();
    EXPECT_FALSE(all.contains(QChar::ReplacementCharacter)) << language;
    for (const char* key : {"LicenseAgree", "LicenseDisagree"}) {
      EXPECT_TRUE(all.contains(withoutMnemonicMark(table.translate(nullptr, key))))
          << language << " " << key;
    }
  }
}

TEST_F(Agreement, AnEmptyTextLeavesTheWindowUsable) {
  window_.setLicenseText({});
  EXPECT_TRUE(text()->toPlainText().isEmpty());
  EXPECT_TRUE(button("agreeButton")->isEnabled());
}

TEST_F(Agreement, ArrowAndPageKeysScrollTheTextAtOnce) {
  window_.resize(window_.minimumSizeHint());
  ask([this] {
    QScrollBar* bar = text()->verticalScrollBar();
    EXPECT_GT(bar->maximum(), 0);
    EXPECT_EQ(bar->value(), 0);
    press(Qt::Key_Down);
    const int afterArrow = bar->value();
    EXPECT_GT(afterArrow, 0);
    press(Qt::Key_PageDown);
    EXPECT_GT(bar->value(), afterArrow);
    press(Qt::Key_Return);
  });
}

TEST_F(Agreement, TheKeyboardReachesTextAndBothButtons) {
  ask([this] {
    std::set<std::string> visited;
    for (int pressed = 0; pressed < 6; ++pressed) {
      visited.insert(window_.focusWidget()->objectName().toStdString());
      press(Qt::Key_Tab);
    }
    EXPECT_THAT(visited, ::testing::UnorderedElementsAre("licenseTextView", "disagreeButton",
                                                         "agreeButton"));
    window_.reject();
  });
}

TEST_F(Agreement, AScreenReaderFindsNamesAndTheText) {
  ask([this] {
    const auto spoken = [](QWidget* widget) {
      return QAccessible::queryAccessibleInterface(widget)->text(QAccessible::Name).toStdString();
    };
    EXPECT_EQ(spoken(&window_), localizedString("LicenseTitle"));
    EXPECT_EQ(spoken(text()), localizedString("LicenseTitle"));
    EXPECT_EQ(spoken(button("agreeButton")), "Agree");
    EXPECT_EQ(spoken(button("disagreeButton")), "Disagree");
    QAccessibleInterface* interface = QAccessible::queryAccessibleInterface(text());
    ASSERT_NE(interface->textInterface(), nullptr);
    EXPECT_GT(interface->textInterface()->characterCount(), 500);
    window_.reject();
  });
}

TEST_F(Agreement, IsNotShownByWhoeverAsksForTheApplicationAgain) {
  window_.makeKeyAndOrderFront();
  EXPECT_FALSE(window_.isVisible());
}

TEST_F(Agreement, AButtonWithoutAControllerDoesNothing) {
  window_.setActions(nullptr);
  QTest::mouseClick(button("agreeButton"), Qt::LeftButton);
  QTest::mouseClick(button("disagreeButton"), Qt::LeftButton);
  EXPECT_EQ(terminations_, 0);
  EXPECT_FALSE(isAgreedTo());
}

}  // namespace
}  // namespace kelvane
