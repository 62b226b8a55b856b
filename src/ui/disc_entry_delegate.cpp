// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/disc_entry_delegate.h"

#include <QIcon>
#include <QPainter>

#include "ui/disc_entry_cells.h"
#include "ui/disc_list_model.h"
#include "ui/display_colors.h"
#include "ui/window_metrics.h"

namespace kelvane {
namespace {

// In points. Two entries fill the content area.
constexpr double kRowHeight = 43;
constexpr double kIconSize = 32;
constexpr double kTextLeft = 58;
constexpr double kTextRightMargin = 10;

/// `frame`, which is laid out from the left, where texts in `row` begin at its right.
QRectF mirrored(QRectF frame, const QRectF& row, Qt::LayoutDirection direction) {
  if (direction == Qt::RightToLeft) frame.moveRight(row.right() - (frame.left() - row.left()));
  return frame;
}

void drawFocus(QPainter& painter, const QRect& row) {
  painter.setPen(QPen(display_colors::kText, 1, Qt::DotLine));
  painter.setBrush(Qt::NoBrush);
  painter.drawRect(row.adjusted(1, 1, -2, -2));
}

}  // namespace

void DiscEntryDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                              const QModelIndex& index) const {
  const double scale = pixelsPerPoint(option.font);
  const QRectF row = option.rect;
  const bool selected = option.state.testFlag(QStyle::State_Selected);
  const USMessageTextCell refusal(index.data(DiscListModel::RefusalRole).toString());

  painter->save();
  painter->setLayoutDirection(option.direction);
  if (selected) painter->fillRect(row, display_colors::kSelection);
  const QRectF icon(row.x() + kSideMargin * scale, row.center().y() - kIconSize * scale / 2,
                    kIconSize * scale, kIconSize * scale);
  index.data(Qt::DecorationRole)
      .value<QIcon>()
      .paint(painter, mirrored(icon, row, option.direction).toAlignedRect());

  QRectF text = row.adjusted(kTextLeft * scale, 0, -kTextRightMargin * scale, 0);
  if (const QRectF badge = refusal.badgeRect(row, scale); !badge.isEmpty()) {
    text.setRight(badge.left() - kTextRightMargin * scale);
  }
  text = mirrored(text, row, option.direction);
  const CenteredTextCell entry(index.data(DiscListModel::VolumeNameRole).toString(),
                               index.data(DiscListModel::DeviceLineRole).toString());
  entry.drawWithFrame(*painter, text, scale, selected);
  refusal.drawWithFrame(*painter, row, scale);
  if (option.state.testFlag(QStyle::State_HasFocus)) drawFocus(*painter, option.rect);
  painter->restore();
}

QSize DiscEntryDelegate::sizeHint(const QStyleOptionViewItem& option,
                                  const QModelIndex& index) const {
  Q_UNUSED(index);
  return {toPixels(kTextLeft, option.font), toPixels(kRowHeight, option.font)};
}

}  // namespace kelvane
