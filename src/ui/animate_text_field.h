// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QString>
#include <atomic>
#include <mutex>

#include "ui/elided_label.h"

namespace kelvane {

class ViewAnimation;

/// A line of text that changes by sliding the old text out to the left and the new one in, within
/// the widget around it, which clips it. Where the desktop asks for less motion the text changes at
/// once.
///
/// Main thread only, but for `setStringValue`.
class AnimateTextField : public ElidedLabel {
  Q_OBJECT

 public:
  /// Shows `text` from the beginning.
  AnimateTextField(const QString& text, QWidget* parent);
  ~AnimateTextField() override;

  /// Where the field rests, in its parent's coordinates. A slide that is running ends there.
  void setRestingFrame(const QRect& frame);

  /// Shows `text`, by a slide that begins with the event loop. Without effect where it is the text
  /// that is shown; while a slide is running the text is replaced at once and the slide goes on.
  /// May be called from any thread.
  void setStringValue(const QString& text);

  /// The text that was set last, which may not be shown yet. Any thread.
  QString stringValue() const;
  bool isSliding() const { return slides_; }

  /// What the field does when its own animation has come to a mark: at 1.0, when the old text is
  /// out of sight, the new one takes its place.
  void animation(const ViewAnimation& reaching, double didReachProgressMark);

 private:
  void startSlide();
  void showNow();

  mutable std::mutex mutex_;
  QString setString_;  // The text to show next. Guarded by the mutex, as is the next.
  QString shown_;
  ViewAnimation* anim1_;  // These two are children of this widget.
  ViewAnimation* anim2_;
  std::atomic<bool> slides_ = false;
};

}  // namespace kelvane
