// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/view_parts.h"

#include <QLabel>
#include <QRegularExpression>

#include "platform/foundation/strings_table.h"
#include "ui/disc_picture.h"
#include "ui/roomy_button.h"

namespace kelvane {
namespace {}  // namespace

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

void setFieldText(QLabel& field, const QString& text) {
  if (field.accessibleDescription().isEmpty()) {
    field.setAccessibleDescription(field.accessibleName());
  } else if (field.text() == text) {
    return;  // Screen readers would hear of a change.
  }
  field.setText(text);
  field.setAccessibleName(text.isEmpty() ? field.accessibleDescription() : text);
}

RoomyButton* makeButton(const char* name, const std::string& key, QWidget* parent) {
  auto* button = new RoomyButton(parent);
  button->setObjectName(QLatin1String(name));
  button->setCaption(localizedText(key));
  return button;
}

QLabel* makeDiscPicture(Shade shade, QWidget* parent) {
  return new DiscPicture(shade, parent);
}

}  // namespace kelvane
