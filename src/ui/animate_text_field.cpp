// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/animate_text_field.h"

#include <QThread>

#include "ui/motion.h"
#include "ui/view_animation.h"

namespace kelvane {
namespace {

constexpr int kSlideMilliseconds = 500;
constexpr int kFramesPerSecond = 25;

}  // namespace

AnimateTextField::AnimateTextField(const QString& text, QWidget* parent)
    : ElidedLabel(parent),
      setString_(text),
      anim1_(new ViewAnimation(*this)),
      anim2_(new ViewAnimation(*this)) {
  showNow();
  for (ViewAnimation* slide : {anim1_, anim2_}) {
    slide->setDuration(kSlideMilliseconds);
    slide->setFrameRate(kFramesPerSecond);
    connect(slide, &ViewAnimation::stateChanged, this,
            [this] { slides_ = anim1_->isRunning() || anim2_->isRunning(); });
  }
  for (const double mark : {0.0, 1.0}) {
    anim1_->addProgressMark(mark, [this](double reached) { animation(*anim1_, reached); });
  }
  anim2_->startWhenAnimation(*anim1_, 1.0);
  setRestingFrame(geometry());
}

// An animation that is deleted while it runs would still tell of its end.
AnimateTextField::~AnimateTextField() {
  for (ViewAnimation* slide : {anim1_, anim2_}) slide->stop();
}

void AnimateTextField::setRestingFrame(const QRect& frame) {
  const QRect outOfSight = frame.translated(-frame.width(), 0);
  anim1_->setFrames(frame, outOfSight);
  anim2_->setFrames(outOfSight, frame);
  if (!isSliding()) setGeometry(frame);
}

void AnimateTextField::setStringValue(const QString& text) {
  {
    const std::lock_guard lock(mutex_);
    setString_ = text;
    if (text == shown_) return;
  }
  const bool isHere = QThread::currentThread() == thread();
  if (isHere && slides_) {
    showNow();
    return;
  }
  // This object is what the work is queued for, so what is left of it ends with the field.
  const bool showsNow = slides_;
  QMetaObject::invokeMethod(
      this, [this, showsNow] { showsNow ? showNow() : startSlide(); }, Qt::QueuedConnection);
}

QString AnimateTextField::stringValue() const {
  const std::lock_guard lock(mutex_);
  return setString_;
}

// A second request that came before the first slide began finds it running, and its text is shown
// by it.
void AnimateTextField::startSlide() {
  if (anim2_->isRunning() || prefersLessMotion(*this)) {
    showNow();
    return;
  }
  setAccessibleName(stringValue());  // A screen reader does not wait for the slide.
  anim1_->start();
}

void AnimateTextField::animation(const ViewAnimation& reaching, double didReachProgressMark) {
  if (&reaching == anim1_ && didReachProgressMark == 1.0) showNow();
}

void AnimateTextField::showNow() {
  QString text;
  {
    const std::lock_guard lock(mutex_);
    text = shown_ = setString_;
  }
  setText(text);
  setAccessibleName(text);
}

}  // namespace kelvane
