// SPDX-License-Identifier: GPL-2.0-or-later
#include "app/terminal_words.h"

#include <algorithm>

#include "platform/foundation/strings_table.h"

namespace kelvane {

std::string asLine(const Alert& alert) {
  const std::string message = localizedString(alert.messageKey);
  if (!alert.detail.empty()) return message + ": " + alert.detail;
  return message + ". " + localizedString(alert.informativeKey);
}

std::string printable(std::string text) {
  const auto isControl = [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7f'; };
  std::replace_if(text.begin(), text.end(), isControl, '?');
  return text;
}

}  // namespace kelvane
