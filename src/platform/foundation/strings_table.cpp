// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/foundation/strings_table.h"

#include <QCoreApplication>
#include <QLocale>
#include <QString>
#include <QTranslator>

namespace kelvane {

void loadStringsTable(const std::string& language) {
  QCoreApplication* application = QCoreApplication::instance();
  // English first: a translator that is installed later is asked earlier, so a text that a language
  // lacks is English.
  auto* english = new QTranslator(application);
  if (english->load(QStringLiteral(":/kelvanefs/strings/kelvanefs_en.qm"))) {
    QCoreApplication::installTranslator(english);
  }
  const QLocale locale = language.empty() ? QLocale() : QLocale(QString::fromStdString(language));
  auto* own = new QTranslator(application);
  if (own->load(locale, QStringLiteral("kelvanefs"), QStringLiteral("_"),
                QStringLiteral(":/kelvanefs/strings"))) {
    QCoreApplication::installTranslator(own);
  }
}

std::string localizedString(const std::string& key) {
  return qtTrId(key.c_str()).toStdString();
}

std::string localizedString(const std::string& key, const std::string& english) {
  std::string text = localizedString(key);
  return text == key ? english : text;
}

}  // namespace kelvane
