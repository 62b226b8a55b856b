// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/view_animation.h"

#include <QEasingCurve>
#include <QWidget>
#include <cmath>
#include <utility>

namespace kelvane {
namespace {

int between(int start, int end, double share) {
  return static_cast<int>(std::lround(std::lerp(start, end, share)));
}

}  // namespace

// The value that Qt interpolates is the share of the duration; the curve is applied here, to the
// steps that are shown.
ViewAnimation::ViewAnimation(QWidget& view) : QVariantAnimation(&view), view_(view) {
  setStartValue(0.0);
  setEndValue(1.0);
}

void ViewAnimation::setFrames(const QRect& start, const QRect& end) {
  start_ = start;
  end_ = end;
}

void ViewAnimation::addProgressMark(double mark, std::function<void(double)> reached) {
  marks_.push_back({.progress = mark, .reached = std::move(reached)});
}

void ViewAnimation::startWhenAnimation(ViewAnimation& other, double reachesProgress) {
  other.addProgressMark(reachesProgress, [this](double) { start(); });
}

void ViewAnimation::updateState(State newState, State oldState) {
  if (newState == Running && oldState == Stopped) {
    shownFrame_ = -1;
    for (Mark& mark : marks_) mark.passed = false;
  }
  QVariantAnimation::updateState(newState, oldState);
}

void ViewAnimation::updateCurrentValue(const QVariant& value) {
  if (state() != Running) return;
  const int frame = currentTime() / frameMilliseconds_;
  const bool isLast = currentTime() >= duration();
  if (frame == shownFrame_ && !isLast) return;
  shownFrame_ = frame;
  const double progress =
      isLast ? 1.0 : static_cast<double>(frame * frameMilliseconds_) / duration();
  Q_UNUSED(value);
  const double share = QEasingCurve(QEasingCurve::InOutSine).valueForProgress(progress);
  view_.setGeometry(between(start_.x(), end_.x(), share), between(start_.y(), end_.y(), share),
                    between(start_.width(), end_.width(), share),
                    between(start_.height(), end_.height(), share));
  for (Mark& mark : marks_) {
    if (mark.passed || progress < mark.progress) continue;
    mark.passed = true;
    mark.reached(mark.progress);
  }
}

}  // namespace kelvane
