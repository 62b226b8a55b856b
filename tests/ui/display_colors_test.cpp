// SPDX-License-Identifier: GPL-2.0-or-later
// Texts of the display can be read: the contrast that the Web Content Accessibility Guidelines 2.1,
// 1.4.3, ask of ordinary text.
#include "ui/display_colors.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace kelvane {
namespace {

constexpr double kEnough = 4.5;

double linear(double channel) {
  return channel <= 0.03928 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
}

double luminance(const QColor& color) {
  return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
         0.0722 * linear(color.blueF());
}

double contrast(const QColor& text, const QColor& ground) {
  const double one = luminance(text);
  const double other = luminance(ground);
  return (std::max(one, other) + 0.05) / (std::min(one, other) + 0.05);
}

TEST(DisplayColors, TextsStandOutFromTheDisplayAndFromTheSelection) {
  using namespace display_colors;
  for (const QColor& ground : {kTop, kBottom}) {
    EXPECT_GE(contrast(kText, ground), kEnough);
    EXPECT_GE(contrast(kSecondaryText, ground), kEnough);
  }
  EXPECT_GE(contrast(kText, kSelection), kEnough);
}

}  // namespace
}  // namespace kelvane
