// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/window_test.h"

#include <QDialog>
#include <QListView>
#include <QTest>

namespace kelvane::testing {

bool RecordedActions::tableViewShouldSelectRow(int32_t row) {
  return isUsable(media_.arrangedObjects().at(static_cast<size_t>(row)));
}

void RecordedActions::burnConfirmationDidConfirm() {
  calls.emplace_back("burnConfirmationDidConfirm");
  endSheet();
}

void RecordedActions::burnConfirmationDidCancel() {
  calls.emplace_back("burnConfirmationDidCancel");
  endSheet();
}

void RecordedActions::endSheet() {
  if (!endsSheetOf) return;
  endsSheetOf->endBurnConfirmationSheet();
  endsSheetOf->orderOutBurnConfirmationPanel();
}

WindowTest::WindowTest() : actions_(window_.mediaController()) {
  window_.setActions(&actions_);
  window_.setOpenButtonCaption("Open Disc");
  window_.makeKeyAndOrderFront();
  EXPECT_TRUE(QTest::qWaitForWindowActive(&window_));
}

QDialog* WindowTest::openSheet(const char* name) {
  for (QDialog* sheet : window_.findChildren<QDialog*>(QLatin1String(name))) {
    if (sheet->isVisible()) return sheet;
  }
  return nullptr;
}

void WindowTest::click(QWidget* widget) {
  QTest::mouseClick(widget, Qt::LeftButton);
}

namespace {

QPoint middleOfRow(QListView* list, int row) {
  const QModelIndex index = list->model()->index(row, 0);
  list->scrollTo(index);
  return list->visualRect(index).center();
}

}  // namespace

void WindowTest::clickRow(int row) {
  auto* list = child<QListView>("diskTableView");
  QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, middleOfRow(list, row));
}

void WindowTest::doubleClickRow(int row) {
  auto* list = child<QListView>("diskTableView");
  const QPoint where = middleOfRow(list, row);
  QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, where);
  QTest::mouseDClick(list->viewport(), Qt::LeftButton, {}, where);
}

void WindowTest::pressKey(Qt::Key key) {
  ASSERT_NE(window_.focusWidget(), nullptr);
  QTest::keyClick(window_.focusWidget(), key);
}

}  // namespace kelvane::testing
