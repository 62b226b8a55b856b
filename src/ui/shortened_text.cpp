// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/shortened_text.h"

namespace kelvane {
namespace {

constexpr qsizetype kLongestName = 60;

}  // namespace

QString shortened(const QString& text, qsizetype longest) {
  if (text.size() <= longest) return text;
  // Half of a character that takes two units would be shown as a stand-in for what is unknown.
  const bool cutsCharacter =
      longest > 0 && text.at(longest).isLowSurrogate() && text.at(longest - 1).isHighSurrogate();
  return text.first(cutsCharacter ? longest - 1 : longest) + QChar(0x2026);
}

QString shortenedName(const QString& name) {
  return shortened(name, kLongestName);
}

}  // namespace kelvane
