// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/view_parts.h"

#include <QLabel>
#include <QPainter>
#include <QPixmap>
#include <QRegularExpression>

#include "platform/foundation/bundle.h"
#include "platform/foundation/strings_table.h"
#include "ui/roomy_button.h"
#include "ui/window_metrics.h"

namespace kelvane {
namespace {

constexpr double kPictureSize = 48;
constexpr double kFaintOpacity = 0.45;

/// The disc icon at `size` points, drawn with as many pixels as the screen of `widget` has for it.
QPixmap discPixmap(Shade shade, const QWidget& widget) {
  const auto path = Bundle::mainBundle().pathForResource("diskicon", "png");
  const QPixmap icon(QString::fromStdString(path.value_or(std::string())));
  const double ratio = widget.devicePixelRatioF();
  const int side = qRound(toPixels(kPictureSize, widget.font()) * ratio);
  QPixmap drawn(side, side);
  drawn.fill(Qt::transparent);
  QPainter painter(&drawn);
  painter.setRenderHint(QPainter::SmoothPixmapTransform);
  painter.setOpacity(shade == Shade::Faint ? kFaintOpacity : 1.0);
  if (!icon.isNull()) {
    painter.drawPixmap(0, 0,
                       icon.scaled(side, side, Qt::KeepAspectRatio, Qt::SmoothTransformation));
  }
  painter.end();
  drawn.setDevicePixelRatio(ratio);
  return drawn;
}

}  // namespace

QString localizedText(const std::string& key) {
  return QString::fromStdString(localizedString(key));
}

QString withoutMnemonic(QString text) {
  return text.replace(QLatin1Char('&'), QStringLiteral("&&"));
}

QString withoutMnemonicMark(QString text) {
  static const QRegularExpression mark(QStringLiteral("&(.)"));
  return text.replace(mark, QStringLiteral("\\1"));
}

QLabel* makeTextField(const char* name, const std::string& accessibleKey, QWidget* parent) {
  auto* label = new QLabel(parent);
  label->setObjectName(QLatin1String(name));
  label->setTextFormat(Qt::PlainText);
  label->setAccessibleName(localizedText(accessibleKey));
  return label;
}

RoomyButton* makeButton(const char* name, const std::string& key, QWidget* parent) {
  auto* button = new RoomyButton(parent);
  button->setObjectName(QLatin1String(name));
  button->setCaption(localizedText(key));
  return button;
}

QLabel* makeDiscPicture(Shade shade, QWidget* parent) {
  auto* picture = new QLabel(parent);
  picture->setPixmap(discPixmap(shade, *parent));
  picture->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Preferred);
  picture->setAccessibleName(localizedText("AccessibleDiskIcon"));
  return picture;
}

}  // namespace kelvane
