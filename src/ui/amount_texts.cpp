// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/amount_texts.h"

#include <QLocale>
#include <cmath>

#include "platform/foundation/placeholders.h"
#include "platform/foundation/strings_table.h"
#include "ui/shortened_text.h"
#include "ui/view_parts.h"

namespace kelvane {
namespace {

constexpr qsizetype kNamesAtMost = 4;

/// The text of `key` with its placeholder filled.
QString filled(const std::string& key, const QString& value) {
  return QString::fromStdString(format(localizedString(key), value.toStdString()));
}

// Numbers are written as in the language of the texts, whatever that of the desktop.
QLocale numberLocale() {
  return QLocale(localizedText("NumberLocale"));
}

QString countText(uint64_t count, const char* keyOfOne, const char* keyOfMany) {
  if (count == 1) return localizedText(keyOfOne);
  return filled(keyOfMany, numberLocale().toString(static_cast<qulonglong>(count)));
}

QString quoted(const QString& name) {
  return filled("QuotedName", shortenedName(name));
}

}  // namespace

QString bytesText(int64_t bytes) {
  constexpr double kKilobyte = 1024;
  constexpr double kMegabyte = kKilobyte * 1024;
  constexpr double kWholeMegabytesFrom = 10;
  const double amount = std::abs(static_cast<double>(bytes));
  if (amount > 0 && amount < kMegabyte / 10) {
    return filled("Kilobytes", numberLocale().toString(std::ceil(amount / kKilobyte), 'f', 0));
  }
  const double megabytes = amount / kMegabyte;
  const int decimals = megabytes >= kWholeMegabytesFrom || amount == 0 ? 0 : 1;
  return filled("Megabytes", numberLocale().toString(megabytes, 'f', decimals));
}

QString filesText(uint64_t count) {
  return countText(count, "OneFile", "ManyFiles");
}

QString foldersText(uint64_t count) {
  return countText(count, "OneFolder", "ManyFolders");
}

QString itemsText(uint64_t files, uint64_t folders) {
  if (folders == 0) return filesText(files);
  if (files == 0) return foldersText(folders);
  return filesText(files) + QStringLiteral(", ") + foldersText(folders);
}

QString namesText(const QStringList& names) {
  QStringList shown;
  for (const QString& name : names.first(qMin(names.size(), kNamesAtMost))) shown << quoted(name);
  QString list = shown.join(QStringLiteral(", "));
  const qsizetype more = names.size() - shown.size();
  if (more == 0) return list;
  return QString::fromStdString(format(localizedString("AndMore"), list.toStdString(), more));
}

}  // namespace kelvane
