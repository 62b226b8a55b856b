// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/motion.h"

#include <QStyle>
#include <QWidget>

namespace kelvane {
namespace {

bool lessMotionIsWanted = false;

}  // namespace

void setLessMotionIsWanted(bool lessMotion) {
  lessMotionIsWanted = lessMotion;
}

// Some desktops' platform themes turn their setting into this hint of the style.
bool prefersLessMotion(const QWidget& widget) {
  if (lessMotionIsWanted) return true;
  return widget.style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, &widget) == 0;
}

}  // namespace kelvane
