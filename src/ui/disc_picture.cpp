// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/disc_picture.h"

#include <QPainter>

#include "platform/foundation/bundle.h"
#include "ui/view_parts.h"
#include "ui/window_metrics.h"

namespace kelvane {
namespace {

constexpr double kPictureSize = 48;  // Points.
constexpr double kFaintOpacity = 0.45;

}  // namespace

DiscPicture::DiscPicture(Shade shade, QWidget* parent) : QLabel(parent), shade_(shade) {
  const auto path = Bundle::mainBundle().pathForResource("diskicon", "png");
  icon_ = QIcon(QString::fromStdString(path.value_or(std::string())));
  // A label that holds a picture is one to screen readers, too. What is seen is painted below.
  setPixmap(icon_.pixmap(1));
  setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Preferred);
  setAccessibleName(localizedText("AccessibleDiskIcon"));
}

QSize DiscPicture::sizeHint() const {
  const int side = toPixels(kPictureSize, font());
  return {side, side};
}

void DiscPicture::paintEvent(QPaintEvent* event) {
  Q_UNUSED(event);
  QPainter painter(this);
  painter.setOpacity(shade_ == Shade::Faint ? kFaintOpacity : 1.0);
  QRect frame(QPoint(), sizeHint());
  frame.moveCenter(rect().center());
  icon_.paint(&painter, frame);
}

}  // namespace kelvane
