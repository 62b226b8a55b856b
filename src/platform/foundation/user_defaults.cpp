// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/foundation/user_defaults.h"

#include <QSettings>
#include <QString>
#include <QVariant>

namespace kelvane {
namespace {

// QSettings objects of one file share their content and are cheap to make, and one used by a single
// call needs no lock.
QSettings settings() {
  return QSettings(QSettings::IniFormat, QSettings::UserScope, QStringLiteral("kelvanefs"),
                   QStringLiteral("kelvanefs"));
}

bool store(const QString& key, const QVariant& value) {
  QSettings file = settings();
  file.setValue(key, value);
  file.sync();
  return file.status() == QSettings::NoError;
}

}  // namespace

UserDefaults& UserDefaults::standard() {
  static UserDefaults defaults;
  return defaults;
}

bool UserDefaults::boolForKey(const std::string& key) const {
  const QString value = settings().value(QString::fromStdString(key)).toString();
  return value == QStringLiteral("1") ||
         value.compare(QStringLiteral("true"), Qt::CaseInsensitive) == 0 ||
         value.compare(QStringLiteral("yes"), Qt::CaseInsensitive) == 0;
}

std::optional<std::string> UserDefaults::stringForKey(const std::string& key) const {
  const QVariant value = settings().value(QString::fromStdString(key));
  if (!value.isValid()) return std::nullopt;
  return value.toString().toStdString();
}

bool UserDefaults::setBool(bool value, const std::string& key) {
  return store(QString::fromStdString(key), value);
}

bool UserDefaults::setString(const std::string& value, const std::string& key) {
  return store(QString::fromStdString(key), QString::fromStdString(value));
}

void UserDefaults::removeKey(const std::string& key) {
  settings().remove(QString::fromStdString(key));
}

}  // namespace kelvane
