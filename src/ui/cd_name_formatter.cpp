// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/cd_name_formatter.h"

namespace kelvane {
namespace {

constexpr qsizetype kLongestName = 16;
constexpr QLatin1String kAllowedCharacters(
    "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ1234567890_ -.+");

}  // namespace

bool CDNameFormatter::isPartialStringValid(const QString& partialString,
                                           qsizetype proposedCaret) const {
  if (partialString.isEmpty()) return true;
  if (partialString.size() > kLongestName) return false;
  if (proposedCaret < 1 || proposedCaret > partialString.size()) return true;
  return kAllowedCharacters.contains(partialString.at(proposedCaret - 1));
}

QString CDNameFormatter::stringForObjectValue(const QString& value) const {
  return value.isEmpty() ? QStringLiteral("my CDROM") : value;
}

QString CDNameFormatter::objectValueForString(const QString& string) const {
  return string.isEmpty() ? QStringLiteral(" ") : string;
}

}  // namespace kelvane
