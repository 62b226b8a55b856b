// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QString>
#include <QWidget>
#include <string>
#include <vector>

#include "ui/main_window.h"

class QDialog;

namespace kelvane::testing {

inline constexpr Rect kInWindow{0, 33, 402, 86};
inline constexpr Rect kLeftOfWindow{-402, 33, 402, 86};
inline constexpr Rect kRightOfWindow{402, 33, 402, 86};

/// Notes what the window asks for; every row of a usable disc may be selected.
class RecordedActions : public WindowActions {
 public:
  explicit RecordedActions(MediaController& media) : media_(media) {}

  void mountBurnFS() override { calls.emplace_back("mountBurnFS"); }
  void tableViewDoubleClicked() override { calls.emplace_back("tableViewDoubleClicked"); }
  bool tableViewShouldSelectRow(int32_t row) override;
  void showDisk() override { calls.emplace_back("showDisk"); }
  void burnConfirmationDidConfirm() override;
  void burnConfirmationDidCancel() override;
  void attemptErase() override { calls.emplace_back("attemptErase"); }

  std::vector<std::string> calls;
  /// Set to make the sheet's answers end the sheet, as the controller does.
  WindowOutlets* endsSheetOf = nullptr;

 private:
  void endSheet();

  MediaController& media_;
};

/// A window on the screen, as it is once the controller has prepared it, with the disc list hidden
/// by nobody.
class WindowTest : public ::testing::Test {
 protected:
  WindowTest();

  /// The child of the window with this object name; fails the test where there is none.
  template <typename Widget>
  Widget* child(const char* name) {
    auto* found = window_.findChild<Widget*>(QLatin1String(name));
    EXPECT_NE(found, nullptr) << "no " << name;
    return found;
  }

  /// The sheet of this object name that is open over the window, or null.
  QDialog* openSheet(const char* name);

  void click(QWidget* widget);
  void clickRow(int row);
  void doubleClickRow(int row);
  /// Sends the key to the widget that has the window's focus.
  void pressKey(Qt::Key key);

  MainWindow window_;
  RecordedActions actions_;
};

}  // namespace kelvane::testing
