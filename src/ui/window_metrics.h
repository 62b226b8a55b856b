// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

class QFont;

namespace kelvane {

/// The window is laid out in points, for a platform font that is 13 points high. The width and the
/// heights of the window's three bands, from top to bottom:
inline constexpr double kWindowWidth = 402;
inline constexpr double kHeaderHeight = 38;
inline constexpr double kContentHeight = 86;
inline constexpr double kButtonBarHeight = 33;
/// Between the sides of the window and what stands nearest to them, in every band.
inline constexpr int kSideMargin = 14;

/// Pixels in one point of the window, for a window whose font is `font`: 1 with a platform font of
/// ordinary size, more with a larger one, so that texts always fit. Never below 1.
double pixelsPerPoint(const QFont& font);

/// `points` in whole pixels.
int toPixels(double points, const QFont& font);

}  // namespace kelvane
