// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/motion.h"

#include <QStyle>
#include <QWidget>

namespace kelvane {

// The desktop's platform theme turns its setting into this hint of the style.
bool prefersLessMotion(const QWidget& widget) {
  return widget.style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, &widget) == 0;
}

}  // namespace kelvane
