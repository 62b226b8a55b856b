// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/window_metrics.h"

#include <QFont>
#include <QFontInfo>
#include <QtMath>
#include <algorithm>

namespace kelvane {
namespace {

// The largest platform font, in pixels, with which the window keeps its own size.
constexpr double kOrdinaryFontPixels = 14;
constexpr double kLargestScale = 3;

}  // namespace

double pixelsPerPoint(const QFont& font) {
  const double scale = QFontInfo(font).pixelSize() / kOrdinaryFontPixels;
  return std::clamp(scale, 1.0, kLargestScale);
}

int toPixels(double points, const QFont& font) {
  return qRound(points * pixelsPerPoint(font));
}

}  // namespace kelvane
