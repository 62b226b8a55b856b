// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QProgressBar>

#include "platform/foundation/progress_indicator.h"

namespace kelvane {

/// The burn progress bar, from 0 to 2. While it is indeterminate it moves only between
/// `startAnimation` and `stopAnimation`.
class BurnProgressBar : public QProgressBar, public ProgressIndicator {
  Q_OBJECT

 public:
  static constexpr double kMaximum = 2.0;
  /// Steps of the bar for each 1.0, fine enough that every pixel of it is used.
  static constexpr int kStepsPerUnit = 1000;

  explicit BurnProgressBar(QWidget* parent = nullptr);

  void setIndeterminate(bool indeterminate) override;
  /// Values outside 0 to 2 count as the nearest of these; what is not a number is left out.
  void setDoubleValue(double value) override;
  void startAnimation() override;
  void stopAnimation() override;

  bool isIndeterminate() const { return indeterminate_; }
  bool isAnimating() const { return indeterminate_ && animating_; }
  double doubleValue() const { return value_; }

 Q_SIGNALS:
  /// How much is done, in whole percent; -1 while nobody knows.
  void percentChanged(int percent);

 private:
  void showState();

  bool indeterminate_ = false;
  bool animating_ = false;
  double value_ = 0;
};

}  // namespace kelvane
