// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QWidget>
#include <array>
#include <chrono>

#include "ui/window_outlets.h"

class QVariantAnimation;

namespace kelvane {

/// The band of the window in which the four content views take turns, by sliding in and out.
///
/// A view that is parked out of sight, or hidden, is also out of reach of the keyboard and of
/// screen readers. Frames are in window points (`Rect`); what lies outside the band is clipped.
class SlidingArea : public QWidget {
  Q_OBJECT

 public:
  explicit SlidingArea(QWidget* parent = nullptr);

  /// Takes `widget` as the view `view`, at `frame`. Each view is added once, before anything else
  /// is asked of it.
  void addView(ContentView view, QWidget* widget, Rect frame);

  /// Moves a view to `frame`; an animation of that view that is still running ends where it is.
  /// Where the desktop wants less motion, every move is direct.
  void setFrame(ContentView view, Rect frame, Movement movement);
  /// How long animated moves from now on take.
  void setAnimationDuration(std::chrono::milliseconds duration) { duration_ = duration; }

  void setViewHidden(ContentView view, bool hidden);
  bool isViewHidden(ContentView view) const { return slot(view).hidden; }

  /// Where the view lies at this moment, and where its last move leads.
  Rect currentFrame(ContentView view) const { return slot(view).frame; }
  Rect targetFrame(ContentView view) const { return slot(view).target; }
  bool isMoving(ContentView view) const;
  /// Whether the view's last move led it into sight, be it hidden or not.
  bool isArriving(ContentView view) const;

 protected:
  void paintEvent(QPaintEvent* event) override;
  void changeEvent(QEvent* event) override;

 private:
  struct Slot {
    QWidget* widget = nullptr;               // A child of this widget.
    QVariantAnimation* animation = nullptr;  // A child of `widget`.
    Rect frame;
    Rect start;
    Rect target;
    bool hidden = false;
  };

  Slot& slot(ContentView view) { return slots_[static_cast<size_t>(view)]; }
  const Slot& slot(ContentView view) const { return slots_[static_cast<size_t>(view)]; }
  void place(Slot& moved, Rect frame);
  void updateVisibility(const Slot& changed);
  void applyScale();

  std::array<Slot, 4> slots_;
  std::chrono::milliseconds duration_{250};
};

}  // namespace kelvane
