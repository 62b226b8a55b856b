// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/disc_list_view.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QKeyEvent>

#include "ui/disc_entry_delegate.h"

namespace kelvane {

DiscListView::DiscListView(QWidget* parent) : QListView(parent) {
  setItemDelegate(new DiscEntryDelegate(this));
  setSelectionMode(QAbstractItemView::SingleSelection);
  setEditTriggers(QAbstractItemView::NoEditTriggers);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
  setUniformItemSizes(true);
  setFrameShape(QFrame::NoFrame);
  // The background is clear: the content area shows through.
  viewport()->setAutoFillBackground(false);
  connect(this, &QListView::doubleClicked, this, [this](const QModelIndex& index) { act(index); });
}

void DiscListView::setRowRule(std::function<bool(int)> mayBeSelected) {
  mayBeSelected_ = std::move(mayBeSelected);
}

void DiscListView::setDoubleAction(std::function<void()> action) {
  doubleAction_ = std::move(action);
}

void DiscListView::setMenuAction(std::function<void(int, QPoint)> action) {
  menuAction_ = std::move(action);
}

QItemSelectionModel::SelectionFlags DiscListView::selectionCommand(const QModelIndex& index,
                                                                   const QEvent* event) const {
  if (index.isValid() && mayBeSelected_ && !mayBeSelected_(index.row())) {
    return QItemSelectionModel::NoUpdate;
  }
  return QListView::selectionCommand(index, event);
}

void DiscListView::keyPressEvent(QKeyEvent* event) {
  if (event->key() != Qt::Key_Return && event->key() != Qt::Key_Enter) {
    QListView::keyPressEvent(event);
    return;
  }
  act(currentIndex());
}

// The action is one on the selected disc, which another row is not meant by.
void DiscListView::act(const QModelIndex& index) {
  if (selectionModel() && selectionModel()->isSelected(index)) {
    if (doubleAction_) doubleAction_();
  } else {
    QApplication::beep();
  }
}

// The menu that the keyboard asks for belongs to the row it has visited, wherever the mouse is.
void DiscListView::contextMenuEvent(QContextMenuEvent* event) {
  const bool byKeyboard = event->reason() == QContextMenuEvent::Keyboard;
  const QModelIndex index = byKeyboard ? currentIndex() : indexAt(event->pos());
  if (!index.isValid() || !menuAction_) return;
  const QPoint where =
      byKeyboard ? viewport()->mapToGlobal(visualRect(index).center()) : event->globalPos();
  menuAction_(index.row(), where);
}

}  // namespace kelvane
