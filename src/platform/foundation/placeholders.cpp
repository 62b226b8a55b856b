// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/foundation/placeholders.h"

namespace kelvane {

std::string fillPlaceholders(std::string_view text, std::span<const std::string> values) {
  std::string filled;
  size_t next = 0;
  for (size_t i = 0; i < text.size(); ++i) {
    const bool isPlaceholder =
        text[i] == '%' && i + 1 < text.size() && (text[i + 1] == '@' || text[i + 1] == 'i');
    if (!isPlaceholder || next == values.size()) {
      filled += text[i];
      continue;
    }
    filled += values[next++];
    ++i;
  }
  return filled;
}

}  // namespace kelvane
