// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QRect>
#include <QVariantAnimation>
#include <functional>
#include <vector>

class QWidget;

namespace kelvane {

/// Moves a widget from one frame to another along an ease-in-out curve, at a frame rate of its own,
/// and tells when it has come so far. Main thread only.
class ViewAnimation : public QVariantAnimation {
  Q_OBJECT

 public:
  /// Borrows the widget, whose child it becomes.
  explicit ViewAnimation(QWidget& view);

  /// In the coordinates of the widget's parent. A running animation goes on between the new frames.
  void setFrames(const QRect& start, const QRect& end);
  /// Steps that are shown in a second; 25 unless told otherwise.
  void setFrameRate(int framesPerSecond) { frameMilliseconds_ = 1000 / framesPerSecond; }

  /// `reached` is called each time a run has come to this share of its duration, from 0 to 1, after
  /// the widget has been moved there. Marks of one place are called in the order of their addition.
  void addProgressMark(double mark, std::function<void(double mark)> reached);
  /// Starts when a run of `other` has come to that share of its duration.
  void startWhenAnimation(ViewAnimation& other, double reachesProgress);

  bool isRunning() const { return state() == Running; }

 protected:
  void updateState(State newState, State oldState) override;
  void updateCurrentValue(const QVariant& value) override;

 private:
  struct Mark {
    double progress;
    std::function<void(double)> reached;
    bool passed = false;
  };

  QWidget& view_;
  QRect start_;
  QRect end_;
  int frameMilliseconds_ = 40;
  int shownFrame_ = -1;
  std::vector<Mark> marks_;
};

}  // namespace kelvane
