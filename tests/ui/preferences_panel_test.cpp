// SPDX-License-Identifier: GPL-2.0-or-later
// The preferences panel, by mouse and keyboard, and what it stores.
#include "ui/preferences_panel.h"

#include <QCheckBox>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QScreen>
#include <QTest>
#include <QTextBrowser>
#include <QTimer>
#include <filesystem>
#include <fstream>

#include "foundation/temporary_user_defaults.h"
#include "platform/foundation/bundle.h"
#include "platform/foundation/user_defaults.h"
#include "ui/window_test.h"

namespace kelvane {
namespace {

using namespace kelvane::testing;

class Preferences : public WindowTest {
 protected:
  /// Waits until it is this window to which keys go. (A dialog counts as active before, with the
  /// window that it belongs to.)
  static bool hasKeyboard(const QWidget* window) {
    return QTest::qWaitFor([window] { return QApplication::activeWindow() == window; });
  }

  PreferencesPanel* openPanel() {
    window_.activateWindow();
    EXPECT_TRUE(hasKeyboard(&window_));
    QTest::keyClick(&window_, Qt::Key_Comma, Qt::ControlModifier);
    auto* panel = child<PreferencesPanel>("prefsPanel");
    EXPECT_TRUE(hasKeyboard(panel));
    return panel;
  }

  static QCheckBox* box(const PreferencesPanel& panel, const char* key) {
    auto* found = panel.findChild<QCheckBox*>(QLatin1String(key));
    EXPECT_NE(found, nullptr) << key;
    return found;
  }

  static std::string explanationOf(const QCheckBox& box) {
    return box.accessibleDescription().toStdString();
  }

  test::TemporaryUserDefaults defaults_;
};

TEST_F(Preferences, TheirKeyOpensThemBesideTheWindowWhichStaysInUse) {
  EXPECT_FALSE(child<QWidget>("prefsPanel")->isVisible());
  PreferencesPanel* panel = openPanel();
  EXPECT_TRUE(panel->isVisible());
  EXPECT_FALSE(panel->isModal());
  EXPECT_EQ(panel->windowTitle(), "Preferences");
  click(child<QWidget>("openButton"));
  EXPECT_THAT(actions_.calls, ::testing::ElementsAre("mountBurnFS"));
}

TEST_F(Preferences, AreFoundInTheMenuOfTheWindow) {
  QTimer::singleShot(0, &window_, [] {
    QWidget* menu = QApplication::activePopupWidget();
    ASSERT_NE(menu, nullptr);
    QTest::keyClick(menu, Qt::Key_P);
  });
  QTest::keyClick(&window_, Qt::Key_F10);
  EXPECT_TRUE(hasKeyboard(child<QWidget>("prefsPanel")));
}

TEST_F(Preferences, ButtonOfTheMenuIsPressedByMouseAndByKeyboard) {
  auto* button = child<QWidget>("windowMenuButton");
  EXPECT_EQ(button->accessibleName(), "Menu");
  int opened = 0;
  const auto closeMenu = [&opened] {
    QWidget* menu = QApplication::activePopupWidget();
    if (!menu) return;
    ++opened;
    menu->close();
  };
  QTimer::singleShot(0, &window_, closeMenu);
  click(button);
  button->setFocus();
  QTimer::singleShot(0, &window_, closeMenu);
  pressKey(Qt::Key_Space);
  EXPECT_EQ(opened, 2);
}

TEST_F(Preferences, ShowWhatIsStoredAndNothingElseReadsAsYes) {
  UserDefaults::standard().setBool(true, "autohide");
  UserDefaults::standard().setBool(true, "disableUpdateCheck");
  window_.setUpdateChecks(UpdateChecks::Made);
  const PreferencesPanel* panel = openPanel();
  EXPECT_TRUE(box(*panel, "autohide")->isChecked());
  EXPECT_FALSE(box(*panel, "noappledoublefiles")->isChecked());
  EXPECT_FALSE(box(*panel, "disableUpdateCheck")->isChecked()) << "it says what is done";
}

TEST_F(Preferences, ChangesAreStoredAtOnce) {
  window_.setUpdateChecks(UpdateChecks::Made);
  const PreferencesPanel* panel = openPanel();
  for (const char* key : {"autohide", "noappledoublefiles", "disableUpdateCheck"}) {
    QCheckBox* setting = box(*panel, key);
    QTest::mouseClick(setting, Qt::LeftButton, {}, QPoint(8, setting->height() / 2));
    EXPECT_TRUE(UserDefaults::standard().boolForKey(key)) << key;
    QTest::mouseClick(setting, Qt::LeftButton, {}, QPoint(8, setting->height() / 2));
    EXPECT_FALSE(UserDefaults::standard().boolForKey(key)) << key;
  }
}

TEST_F(Preferences, OpeningThemChangesNothing) {
  openPanel();
  EXPECT_TRUE(std::filesystem::is_empty(defaults_.folder()));
}

TEST_F(Preferences, AreWorkedByTheKeyboardAlone) {
  window_.setUpdateChecks(UpdateChecks::Made);
  PreferencesPanel* panel = openPanel();
  EXPECT_EQ(panel->focusWidget(), box(*panel, "autohide"));
  QTest::keyClick(panel->focusWidget(), Qt::Key_Space);
  QTest::keyClick(panel->focusWidget(), Qt::Key_Tab);
  QTest::keyClick(panel->focusWidget(), Qt::Key_Space);
  EXPECT_TRUE(UserDefaults::standard().boolForKey("autohide"));
  EXPECT_TRUE(UserDefaults::standard().boolForKey("noappledoublefiles"));
  QTest::keyClick(panel->focusWidget(), Qt::Key_N, Qt::AltModifier);
  EXPECT_TRUE(
      QTest::qWaitFor([] { return UserDefaults::standard().boolForKey("disableUpdateCheck"); }));
  QTest::keyClick(panel->focusWidget(), Qt::Key_Return);
  EXPECT_FALSE(panel->isVisible()) << "Return closes, since nothing waits to be confirmed";
}

TEST_F(Preferences, EscapeClosesThemAndKeepsWhatWasChanged) {
  PreferencesPanel* panel = openPanel();
  QTest::keyClick(panel->focusWidget(), Qt::Key_Space);
  QTest::keyClick(panel->focusWidget(), Qt::Key_Escape);
  EXPECT_FALSE(panel->isVisible());
  EXPECT_TRUE(UserDefaults::standard().boolForKey("autohide"));
}

TEST_F(Preferences, ShowWhatOthersHaveStoredMeanwhileWhenOpenedAgain) {
  openPanel()->close();
  UserDefaults::standard().setBool(true, "noappledoublefiles");
  EXPECT_TRUE(box(*openPanel(), "noappledoublefiles")->isChecked());
}

TEST_F(Preferences, WhereNoUpdateCheckIsMadeItsSettingSaysSo) {
  window_.setUpdateChecks(UpdateChecks::NotMade);
  QCheckBox* setting = box(*openPanel(), "disableUpdateCheck");
  EXPECT_FALSE(setting->isEnabled());
  EXPECT_FALSE(setting->isChecked());
  EXPECT_THAT(explanationOf(*setting), ::testing::HasSubstr("never looks for newer versions"));
  window_.setUpdateChecks(UpdateChecks::Made);
  EXPECT_TRUE(setting->isEnabled());
  EXPECT_TRUE(setting->isChecked());
}

TEST_F(Preferences, EachSettingIsExplainedAlsoToWhoCannotSeeIt) {
  const PreferencesPanel* panel = openPanel();
  for (const QCheckBox* setting : panel->findChildren<QCheckBox*>()) {
    EXPECT_FALSE(setting->accessibleName().isEmpty());
    EXPECT_FALSE(setting->accessibleName().contains('&'))
        << setting->accessibleName().toStdString();
    EXPECT_FALSE(setting->accessibleDescription().isEmpty());
  }
}

TEST_F(Preferences, ChangeThatCannotBeStoredIsToldAndTakenBack) {
  // A file stands where the folder of the settings would have to be made.
  std::ofstream(defaults_.folder() + "/kelvanefs") << "in the way";
  const PreferencesPanel* panel = openPanel();
  QTest::keyClick(box(*panel, "autohide"), Qt::Key_Space);
  EXPECT_FALSE(box(*panel, "autohide")->isChecked());
  EXPECT_TRUE(panel->findChild<QLabel*>("preferencesNotStored")->isVisible());
}

TEST_F(Preferences, TellTheVersionAndOpenTheLicence) {
  window_.setLicenseSource([] { return "<h1>Terms</h1>"; });
  const PreferencesPanel* panel = openPanel();
  EXPECT_THAT(panel->findChild<QLabel*>("versionField")->text().toStdString(),
              ::testing::EndsWith(Bundle::mainBundle().shortVersionString()));
  click(panel->findChild<QPushButton*>("licenseButton"));
  auto* reader = child<QDialog>("licenseReader");
  EXPECT_TRUE(hasKeyboard(reader));
  EXPECT_EQ(reader->findChild<QTextBrowser*>("licenseTextView")->toPlainText(), "Terms");
  QTest::keyClick(reader->focusWidget(), Qt::Key_Escape);
  EXPECT_FALSE(reader->isVisible());
}

TEST_F(Preferences, AreCentredWithTheWindow) {
  window_.centerWindows();
  const QWidget* panel = child<QWidget>("prefsPanel");
  const QPoint offset =
      panel->frameGeometry().center() - window_.screen()->availableGeometry().center();
  EXPECT_LE(offset.manhattanLength(), 2);
}

}  // namespace
}  // namespace kelvane
