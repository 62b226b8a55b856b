// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QAnimationDriver>
#include <QCoreApplication>

namespace kelvane::testing {

/// The time of all animations while it lives: it passes when the test says so.
class SteppedClock : public QAnimationDriver {
 public:
  SteppedClock() { install(); }
  ~SteppedClock() override { uninstall(); }

  qint64 elapsed() const override { return now_; }

  /// Lets animations begin that have been asked for, then so much time pass.
  void pass(int milliseconds) {
    QCoreApplication::processEvents();
    now_ += milliseconds;
    advanceAnimation();
    QCoreApplication::processEvents();
  }

 private:
  qint64 now_ = 0;
};

}  // namespace kelvane::testing
