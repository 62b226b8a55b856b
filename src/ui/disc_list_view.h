// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QListView>
#include <functional>

namespace kelvane {

/// The disc table. The keyboard can visit every disc, also one that cannot be opened, so that its
/// reason can be read; but only what the row rule allows becomes selected.
class DiscListView : public QListView {
  Q_OBJECT

 public:
  explicit DiscListView(QWidget* parent = nullptr);

  /// Decides whether a row may be selected. Without a rule every row may.
  void setRowRule(std::function<bool(int row)> mayBeSelected);
  /// Called for a double click on a row, and for Return or Enter on the selected one.
  void setDoubleAction(std::function<void()> action);
  /// Called when the user asks for the menu of a row, by the mouse or the keyboard, with the place
  /// on the screen where it is to appear.
  void setMenuAction(std::function<void(int row, QPoint where)> action);

 protected:
  QItemSelectionModel::SelectionFlags selectionCommand(const QModelIndex& index,
                                                       const QEvent* event) const override;
  void keyPressEvent(QKeyEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;

 private:
  void act(const QModelIndex& index);

  std::function<bool(int)> mayBeSelected_;
  std::function<void()> doubleAction_;
  std::function<void(int, QPoint)> menuAction_;
};

}  // namespace kelvane
