// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/sliding_area.h"

#include <QEvent>
#include <QLinearGradient>
#include <QPainter>
#include <QVariantAnimation>
#include <cmath>

#include "ui/display_colors.h"
#include "ui/motion.h"
#include "ui/window_metrics.h"

namespace kelvane {
namespace {

bool isInSight(Rect frame) {
  return frame.x + frame.width > 0 && frame.x < kWindowWidth &&
         frame.y + frame.height > kButtonBarHeight && frame.y < kButtonBarHeight + kContentHeight;
}

Rect between(Rect start, Rect end, double progress) {
  return {std::lerp(start.x, end.x, progress), std::lerp(start.y, end.y, progress),
          std::lerp(start.width, end.width, progress),
          std::lerp(start.height, end.height, progress)};
}

}  // namespace

SlidingArea::SlidingArea(QWidget* parent) : QWidget(parent) {
  setPalette(displayPalette(palette()));
  applyScale();
}

void SlidingArea::addView(ContentView view, QWidget* widget, Rect frame) {
  Slot& added = slot(view);
  added.widget = widget;
  widget->setParent(this);
  added.animation = new QVariantAnimation(widget);
  added.animation->setStartValue(0.0);
  added.animation->setEndValue(1.0);
  added.animation->setEasingCurve(QEasingCurve::InOutSine);
  connect(added.animation, &QVariantAnimation::valueChanged, this,
          [this, &added](const QVariant& progress) {
            place(added, between(added.start, added.target, progress.toDouble()));
          });
  connect(added.animation, &QVariantAnimation::finished, this,
          [this, &added] { updateVisibility(added); });
  added.target = frame;
  place(added, frame);
  updateVisibility(added);
}

void SlidingArea::setFrame(ContentView view, Rect frame, Movement movement) {
  Slot& moved = slot(view);
  moved.animation->stop();
  moved.start = moved.frame;
  moved.target = frame;
  const bool animated =
      movement == Movement::Animated && duration_.count() > 0 && !prefersLessMotion(*this);
  if (animated && !(moved.start == moved.target)) {
    moved.animation->setDuration(static_cast<int>(duration_.count()));
    moved.animation->start();
  } else {
    place(moved, frame);
  }
  updateVisibility(moved);
}

void SlidingArea::setViewHidden(ContentView view, bool hidden) {
  slot(view).hidden = hidden;
  updateVisibility(slot(view));
}

bool SlidingArea::isMoving(ContentView view) const {
  return slot(view).animation->state() == QAbstractAnimation::Running;
}

bool SlidingArea::isArriving(ContentView view) const {
  return isInSight(slot(view).target);
}

void SlidingArea::place(Slot& moved, Rect frame) {
  moved.frame = frame;
  // Points count upwards from the lower edge of the window, pixels downwards from this widget's
  // top.
  const double top = kButtonBarHeight + kContentHeight - frame.y - frame.height;
  moved.widget->setGeometry(toPixels(frame.x, font()), toPixels(top, font()),
                            toPixels(frame.width, font()), toPixels(frame.height, font()));
}

void SlidingArea::updateVisibility(const Slot& changed) {
  const bool moving = changed.animation->state() == QAbstractAnimation::Running;
  changed.widget->setVisible(!changed.hidden && (moving || isInSight(changed.target)));
}

void SlidingArea::applyScale() {
  setFixedSize(toPixels(kWindowWidth, font()), toPixels(kContentHeight, font()));
  for (Slot& each : slots_) {
    if (each.widget) place(each, each.frame);
  }
}

void SlidingArea::paintEvent(QPaintEvent* event) {
  Q_UNUSED(event);
  QPainter painter(this);
  QLinearGradient gradient(0, 0, 0, height());
  gradient.setColorAt(0, display_colors::kTop);
  gradient.setColorAt(1, display_colors::kBottom);
  painter.fillRect(rect(), gradient);
  painter.setPen(display_colors::kEdge);
  painter.drawLine(0, 0, width(), 0);
  painter.drawLine(0, height() - 1, width(), height() - 1);
}

void SlidingArea::changeEvent(QEvent* event) {
  QWidget::changeEvent(event);
  if (event->type() == QEvent::FontChange) applyScale();
}

}  // namespace kelvane
