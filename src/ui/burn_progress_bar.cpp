// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/burn_progress_bar.h"

#include <algorithm>
#include <cmath>

namespace kelvane {

BurnProgressBar::BurnProgressBar(QWidget* parent) : QProgressBar(parent) {
  setTextVisible(false);
  showState();
}

void BurnProgressBar::setIndeterminate(bool indeterminate) {
  indeterminate_ = indeterminate;
  showState();
}

void BurnProgressBar::setDoubleValue(double value) {
  if (std::isnan(value)) return;
  value_ = std::clamp(value, 0.0, kMaximum);
  showState();
}

void BurnProgressBar::startAnimation() {
  animating_ = true;
  showState();
}

void BurnProgressBar::stopAnimation() {
  animating_ = false;
  showState();
}

void BurnProgressBar::showState() {
  if (isAnimating()) {
    setRange(0, 0);  // The toolkit's form of a bar that moves without an end in sight.
    Q_EMIT percentChanged(-1);
    return;
  }
  setRange(0, static_cast<int>(kMaximum * kStepsPerUnit));
  setValue(indeterminate_ ? 0 : static_cast<int>(std::lround(value_ * kStepsPerUnit)));
  Q_EMIT percentChanged(indeterminate_ ? -1 : static_cast<int>(100 * value_ / kMaximum));
}

}  // namespace kelvane
