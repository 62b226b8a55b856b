// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <type_traits>

namespace kelvane {

/// Fills the placeholders of `text`, "%@" and "%i", from left to right with `values`, which are
/// already text.
///
/// A placeholder without a value stays as it is; a value without a placeholder is dropped. A value
/// is never searched for placeholders itself, so a file name may hold "%@".
std::string fillPlaceholders(std::string_view text, std::span<const std::string> values);

/// What stands for a value in a filled text: a string as it is, an integer in decimal digits.
template <typename Value>
std::string placeholderText(const Value& value) {
  if constexpr (std::is_integral_v<Value>) {
    return std::to_string(value);
  } else {
    return std::string(value);
  }
}

/// The same for values of any of these kinds: `format("/tmp/.%@.hide", name)`.
template <typename... Values>
std::string format(std::string_view text, const Values&... values) {
  const std::string texts[] = {placeholderText(values)..., std::string()};
  return fillPlaceholders(text, std::span(texts, sizeof...(Values)));
}

}  // namespace kelvane
