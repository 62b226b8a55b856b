// SPDX-License-Identifier: GPL-2.0-or-later
#include "overlayfs/hide_pattern.h"

#include <span>

namespace kelvane {
namespace {

using Forms = std::span<const std::string_view>;

// The UTF-8 forms of one character in either case: composed, then the letter with U+0308.
constexpr std::string_view kAUmlaut[] = {"\u00e4", "\u00c4", "a\u0308", "A\u0308"};
constexpr std::string_view kOUmlaut[] = {"\u00f6", "\u00d6", "o\u0308", "O\u0308"};
constexpr std::string_view kUUmlaut[] = {"\u00fc", "\u00dc", "u\u0308", "U\u0308"};
constexpr std::string_view kSharpS[] = {"\u00df", "\u1e9e"};
constexpr std::string_view kOpeningBrace[] = {"{"};
constexpr std::string_view kClosingBrace[] = {"}"};
constexpr std::string_view kOpeningBracket[] = {"["};
constexpr std::string_view kClosingBracket[] = {"]"};

constexpr Forms kCharacters[] = {kAUmlaut,      kOUmlaut,      kUUmlaut,        kSharpS,
                                 kOpeningBrace, kClosingBrace, kOpeningBracket, kClosingBracket};

// Bytes of which each form has one; most names have none of them.
constexpr std::string_view kMarks = "{}[]\xc3\xcc\xe1";

// The length of the form that stands at the beginning of `text`; 0 where none does.
size_t lengthOfFormAt(std::string_view text, Forms forms) {
  for (const std::string_view form : forms) {
    if (text.starts_with(form)) return form.size();
  }
  return 0;
}

std::string withReplaced(std::string_view text, Forms forms) {
  std::string result;
  result.reserve(text.size());
  for (size_t position = 0; position < text.size();) {
    const size_t length = lengthOfFormAt(text.substr(position), forms);
    result += length == 0 ? text[position] : '*';
    position += length == 0 ? 1 : length;
  }
  return result;
}

}  // namespace

std::string hidePattern(std::string_view placeholderPath) {
  std::string pattern(placeholderPath);
  if (pattern.find_first_of(kMarks) == std::string::npos) return pattern;
  for (const Forms forms : kCharacters) pattern = withReplaced(pattern, forms);
  return pattern;
}

}  // namespace kelvane
