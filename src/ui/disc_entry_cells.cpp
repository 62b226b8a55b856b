// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/disc_entry_cells.h"

#include <QFontMetricsF>
#include <QGuiApplication>
#include <QPainter>

#include "ui/display_colors.h"

namespace kelvane {
namespace {

constexpr double kNamePoints = 13;
constexpr double kDevicePoints = 9;
constexpr double kBadgePoints = 8;
constexpr double kNameOffset = -6;
constexpr double kDeviceOffset = 9;
constexpr double kBadgeHeight = 14;
constexpr double kBadgePadding = 6;
constexpr double kBadgeMargin = 20;
constexpr double kBadgeRadius = 6;

/// Draws a line whose middle lies `offset` pixels below the middle of the frame.
void drawLine(QPainter& painter, const QRectF& frame, double offset, const QString& text) {
  const QFontMetricsF metrics(painter.font());
  const QString shown = metrics.elidedText(text, Qt::ElideRight, frame.width());
  const double top = frame.y() + (frame.height() - metrics.height()) / 2 + offset;
  const bool fromTheRight = painter.layoutDirection() == Qt::RightToLeft;
  const double left = fromTheRight ? frame.right() - metrics.horizontalAdvance(shown) : frame.x();
  painter.drawText(QPointF(left, top + metrics.ascent()), shown);
}

}  // namespace

QFont cellFont(double points, double scale) {
  QFont font = QGuiApplication::font();
  font.setFamilies({QStringLiteral("Lucida Grande"), font.family()});
  font.setPixelSize(qRound(points * scale));
  return font;
}

void CenteredTextCell::drawWithFrame(QPainter& painter, const QRectF& frame, double scale,
                                     bool highlighted) const {
  painter.save();
  painter.setFont(cellFont(kNamePoints, scale));
  painter.setPen(display_colors::kText);
  drawLine(painter, frame, kNameOffset * scale, volumeName_);
  painter.setFont(cellFont(kDevicePoints, scale));
  painter.setPen(highlighted ? display_colors::kText : display_colors::kSecondaryText);
  drawLine(painter, frame, kDeviceOffset * scale, deviceLine_);
  painter.restore();
}

QRectF USMessageTextCell::badgeRect(const QRectF& frame, double scale,
                                    Qt::LayoutDirection direction) const {
  if (text_.isEmpty()) return {};
  const double textWidth = QFontMetricsF(cellFont(kBadgePoints, scale)).horizontalAdvance(text_);
  const double width = textWidth + 2 * kBadgePadding * scale;
  const double height = kBadgeHeight * scale;
  const double left = direction == Qt::RightToLeft ? frame.x() + kBadgeMargin * scale
                                                   : frame.right() - width - kBadgeMargin * scale;
  return {left, frame.y() + frame.height() / 2 - height / 2 + 0.5, width, height};
}

void USMessageTextCell::drawWithFrame(QPainter& painter, const QRectF& frame, double scale) const {
  if (text_.isEmpty()) return;
  const QRectF badge = badgeRect(frame, scale, painter.layoutDirection());
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(Qt::NoPen);
  painter.setBrush(QColor::fromRgbF(0.9F, 0.3F, 0.3F));
  painter.drawRoundedRect(badge, kBadgeRadius * scale, kBadgeRadius * scale);
  painter.setFont(cellFont(kBadgePoints, scale));
  painter.setPen(Qt::white);
  const QFontMetricsF metrics(painter.font());
  const double top = frame.y() + frame.height() / 2 - metrics.height() / 2 + 0.5;
  painter.drawText(QPointF(badge.x() + kBadgePadding * scale, top + metrics.ascent()), text_);
  painter.restore();
}

}  // namespace kelvane
