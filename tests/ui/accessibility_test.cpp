// SPDX-License-Identifier: GPL-2.0-or-later
// What a screen reader finds in the window, and that the keyboard reaches everything.
#include <QAbstractButton>
#include <QAccessible>
#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QProgressBar>
#include <QPushButton>
#include <QTest>
#include <set>

#include "ui/sample_records.h"
#include "ui/window_states.h"
#include "ui/window_test.h"

namespace kelvane {
namespace {

using ::testing::IsEmpty;
using ::testing::IsSupersetOf;
using namespace kelvane::testing;

class Accessibility : public WindowTest {
 protected:
  std::string spokenName(QWidget* widget) {
    QAccessibleInterface* interface = QAccessible::queryAccessibleInterface(widget);
    return interface ? interface->text(QAccessible::Name).toStdString() : std::string();
  }

  std::string spokenLabel(QWidget* widget) {
    QAccessibleInterface* interface = QAccessible::queryAccessibleInterface(widget);
    const auto labels = interface->relations(QAccessible::Label);
    return labels.empty() ? std::string()
                          : labels.front().first->text(QAccessible::Name).toStdString();
  }

  /// Object names of the visible widgets below `top` that are there for the user but have no name.
  std::vector<std::string> nameless(QWidget* top) {
    std::vector<std::string> found;
    for (QWidget* widget : top->findChildren<QWidget*>()) {
      if (!widget->isVisible() || !forTheUser(widget)) continue;
      if (spokenName(widget).empty()) found.push_back(widget->objectName().toStdString());
    }
    return found;
  }

  /// The object names that the Tab key visits from the window's first widget on.
  std::set<std::string> visitedByTab(QWidget* top) {
    std::set<std::string> visited;
    for (int press = 0; press < 20; ++press) {
      QTest::keyClick(top->focusWidget() ? top->focusWidget() : top, Qt::Key_Tab);
      if (top->focusWidget()) visited.insert(top->focusWidget()->objectName().toStdString());
    }
    return visited;
  }

 private:
  static bool forTheUser(QWidget* widget) {
    return qobject_cast<QLabel*>(widget) || qobject_cast<QPushButton*>(widget) ||
           qobject_cast<QListView*>(widget) || qobject_cast<QProgressBar*>(widget) ||
           qobject_cast<QLineEdit*>(widget) || qobject_cast<QComboBox*>(widget);
  }
};

TEST_F(Accessibility, EverythingInTheListStateHasAName) {
  window_.setInsertableDiscs({"Holiday"}, {});
  window_.mediaController().addObjects({usableRecord("Holiday")});
  EXPECT_THAT(nameless(&window_), IsEmpty());
  EXPECT_EQ(spokenName(child<QWidget>("diskTableView")), "Discs");
}

TEST_F(Accessibility, EntriesOfTheListAreSpokenWhole) {
  window_.mediaController().addObjects({refusedRecord("Old", "Disc is full")});
  QAccessibleInterface* list =
      QAccessible::queryAccessibleInterface(child<QWidget>("diskTableView"));
  ASSERT_NE(list, nullptr);
  ASSERT_EQ(list->childCount(), 1);
  EXPECT_EQ(list->child(0)->text(QAccessible::Name),
            "Old, CDR in KELVANE Emulated Burner, Disc is full");
}

TEST_F(Accessibility, EverythingOfAnOpenDiscHasAName) {
  window_.setFrame(ContentView::MountedItem, kInWindow, Movement::Direct);
  window_.setVolumeNameField("Holiday");
  EXPECT_THAT(nameless(&window_), IsEmpty());
}

TEST_F(Accessibility, EverythingOfABurnHasAName) {
  window_.setFrame(ContentView::Burn, kInWindow, Movement::Direct);
  window_.burnProgressIndicator().setDoubleValue(1);
  EXPECT_THAT(nameless(&window_), IsEmpty());
  EXPECT_EQ(spokenName(child<QWidget>("burnProgressIndicator")), "Progress of the burn");
}

TEST_F(Accessibility, EverythingOfTheSheetsHasAName) {
  window_.beginBurnConfirmationSheet();
  QDialog* sheet = openSheet("burnConfirmationPanel");
  ASSERT_NE(sheet, nullptr);
  EXPECT_THAT(nameless(sheet), IsEmpty());
  EXPECT_EQ(spokenName(sheet->findChild<QLineEdit*>()), "Disc name");
  // The name of a pop-up is what it shows; what it is for is told by the label that belongs to it.
  EXPECT_EQ(spokenLabel(sheet->findChild<QComboBox*>()), "Speed:");
  window_.endBurnConfirmationSheet();

  window_.beginAlertSheet({.style = Alert::Style::Warning,
                           .buttonKeys = {"Erase", "Cancel"},
                           .messageKey = "attempteraseshort",
                           .informativeKey = "attempteraselong",
                           .detail = {}},
                          {});
  ASSERT_NE(openSheet("alertSheet"), nullptr);
  EXPECT_EQ(openSheet("alertSheet")->accessibleName(), "Erase this disc?");
}

/// What a screen reader would not know how to speak of, below and with `item`.
std::vector<std::string> unspeakable(QAccessibleInterface& item) {
  std::vector<std::string> found;
  if (item.state().invisible) return found;
  const std::string name = item.text(QAccessible::Name).toStdString();
  const QObject* object = item.object();
  const std::string what = object ? object->objectName().toStdString() : std::string("an item");
  if (item.role() == QAccessible::NoRole) found.push_back(what + " has no role");
  if (item.state().focusable && name.empty()) found.push_back(what + " has no name");
  for (int index = 0; index < item.childCount(); ++index) {
    QAccessibleInterface* child = item.child(index);
    if (!child || !child->isValid()) continue;
    for (std::string& each : unspeakable(*child)) found.push_back(std::move(each));
  }
  return found;
}

TEST_F(Accessibility, EveryStateAndEveryAlertIsSpokenOfByRoleAndName) {
  for (const WindowState& state : windowStates()) {
    QWidget* top = state.enter(window_);
    ASSERT_NE(top, nullptr) << state.name;
    QAccessibleInterface* root = QAccessible::queryAccessibleInterface(top);
    EXPECT_FALSE(root->text(QAccessible::Name).isEmpty()) << state.name;
    EXPECT_THAT(unspeakable(*root), IsEmpty()) << state.name;
    EXPECT_THAT(nameless(top), IsEmpty()) << state.name;
    leaveState(window_);
  }
}

TEST_F(Accessibility, WindowIsOneAndBearsItsTitle) {
  QAccessibleInterface* window = QAccessible::queryAccessibleInterface(&window_);
  EXPECT_EQ(window->role(), QAccessible::Window);
  EXPECT_EQ(window->text(QAccessible::Name), "KelvaneFS");
}

TEST_F(Accessibility, FieldsSpeakTheirTextAndAreDescribedByWhatTheyAreFor) {
  window_.setFrame(ContentView::MountedItem, kInWindow, Movement::Direct);
  window_.setVolumeNameField("Holiday");
  auto* field = child<QWidget>("volumeNameField");
  EXPECT_EQ(spokenName(field), "Holiday");
  EXPECT_EQ(field->accessibleDescription(), "Name of the disc");
  window_.setVolumeNameField("");
  EXPECT_EQ(spokenName(field), "Name of the disc");
}

/// The mnemonics of the visible buttons and entries below `top`.
std::vector<std::string> mnemonicsOf(QWidget* top) {
  std::vector<std::string> found;
  for (const QAbstractButton* button : top->findChildren<QAbstractButton*>()) {
    if (!button->isVisible() || button->window() != top->window() || button->text().isEmpty()) {
      continue;
    }
    const QKeySequence mnemonic = QKeySequence::mnemonic(button->text());
    found.push_back(mnemonic.isEmpty() ? "none: " + button->text().toStdString()
                                       : mnemonic.toString().toStdString());
  }
  return found;
}

TEST_F(Accessibility, EachButtonHasAMnemonicOfItsOwnInBothLanguages) {
  for (const char* language : {"en", "de"}) {
    const Language spoken(language);
    MainWindow window;
    leaveState(window);
    window.makeKeyAndOrderFront();
    for (const WindowState& state : windowStates()) {
      QWidget* entered = state.enter(window);
      ASSERT_NE(entered, nullptr) << state.name;
      const std::vector<std::string> all = mnemonicsOf(entered);
      const std::set<std::string> different(all.begin(), all.end());
      EXPECT_EQ(all.size(), different.size()) << language << " " << state.name;
      EXPECT_THAT(all, ::testing::Each(::testing::StartsWith("Alt+")))
          << language << " " << state.name;
      leaveState(window);
    }
  }
}

TEST_F(Accessibility, MnemonicPressesItsButton) {
  window_.setOpenButtonCaption("&Open Disc");
  QTest::keyClick(&window_, Qt::Key_O, Qt::AltModifier);
  EXPECT_TRUE(QTest::qWaitFor([this] { return !actions_.calls.empty(); }));
  EXPECT_THAT(actions_.calls, ::testing::ElementsAre("mountBurnFS"));
}

TEST_F(Accessibility, KeyboardReachesListAndButtons) {
  window_.setInsertableDiscs({"Holiday"}, {});
  window_.mediaController().addObjects({usableRecord("Holiday")});
  EXPECT_THAT(visitedByTab(&window_), IsSupersetOf({"diskTableView", "insertDiscButton",
                                                    "openButton", "windowMenuButton"}));
}

TEST_F(Accessibility, KeyboardReachesTheEraseButtonWhichSaysWhatItDoes) {
  window_.mediaController().addObjects({usableRecord("Holiday")});
  window_.mediaController().setSelectionIndex(0);
  EXPECT_THAT(visitedByTab(&window_), IsSupersetOf({"eraseButton", "openButton"}));
  EXPECT_EQ(spokenName(child<QWidget>("eraseButton")), "Erase Disc…");
  EXPECT_FALSE(child<QWidget>("eraseButton")->accessibleDescription().isEmpty());
  EXPECT_THAT(nameless(&window_), IsEmpty());
}

TEST_F(Accessibility, KeyboardSkipsWhatIsOutOfSight) {
  window_.setAnimationDuration(0);
  window_.setFrame(ContentView::DiskScroll, kLeftOfWindow, Movement::Animated);
  window_.setFrame(ContentView::MountedItem, kInWindow, Movement::Animated);
  const std::set<std::string> visited = visitedByTab(&window_);
  EXPECT_THAT(visited, IsSupersetOf({"showDiskButton", "openButton"}));
  EXPECT_EQ(visited.count("diskTableView"), 0U);
}

TEST_F(Accessibility, KeyboardReachesEverythingInTheConfirmationSheet) {
  window_.beginBurnConfirmationSheet();
  EXPECT_THAT(visitedByTab(openSheet("burnConfirmationPanel")),
              IsSupersetOf({"burnConfirmationPanelDiskTitle", "burnSpeedPopupButton",
                            "burnConfirmButton", "burnCancelButton"}));
}

TEST_F(Accessibility, ReturnPressesTheFocusedButton) {
  child<QPushButton>("openButton")->setFocus();
  pressKey(Qt::Key_Return);
  pressKey(Qt::Key_Space);
  EXPECT_THAT(actions_.calls, ::testing::ElementsAre("mountBurnFS", "mountBurnFS"));
}

}  // namespace
}  // namespace kelvane
