// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QFont>
#include <QRectF>
#include <QString>

class QPainter;

namespace kelvane {

/// The font of the disc list at `points`, in a window of `scale` pixels to the point: "Lucida
/// Grande", or the platform's font where that is not installed.
QFont cellFont(double points, double scale);

/// Draws a disc's name over its device line, from the side of the frame where the painter's layout
/// direction begins. Texts that are wider than the frame are shortened.
class CenteredTextCell {
 public:
  CenteredTextCell(QString volumeName, QString deviceLine)
      : volumeName_(std::move(volumeName)), deviceLine_(std::move(deviceLine)) {}

  void drawWithFrame(QPainter& painter, const QRectF& frame, double scale, bool highlighted) const;

 private:
  QString volumeName_;
  QString deviceLine_;
};

/// Draws the reason why a disc cannot be opened on a red badge at the end of the frame, its right
/// where texts run from left to right; nothing where there is none.
class USMessageTextCell {
 public:
  explicit USMessageTextCell(QString text) : text_(std::move(text)) {}

  /// Where the badge lies in `frame`; empty where there is none.
  QRectF badgeRect(const QRectF& frame, double scale,
                   Qt::LayoutDirection direction = Qt::LeftToRight) const;
  void drawWithFrame(QPainter& painter, const QRectF& frame, double scale) const;

 private:
  QString text_;
};

}  // namespace kelvane
