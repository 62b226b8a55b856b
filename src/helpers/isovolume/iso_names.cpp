// SPDX-License-Identifier: GPL-2.0-or-later
#include "helpers/isovolume/iso_names.h"

namespace kelvane::isovolume {
namespace {

void appendUtf8(char32_t character, std::string* text) {
  const auto append = [text](char32_t byte) { text->push_back(static_cast<char>(byte)); };
  if (character < 0x80) {
    append(character);
  } else if (character < 0x800) {
    append(0xC0 | character >> 6);
    append(0x80 | (character & 0x3F));
  } else if (character < 0x10000) {
    append(0xE0 | character >> 12);
    append(0x80 | (character >> 6 & 0x3F));
    append(0x80 | (character & 0x3F));
  } else {
    append(0xF0 | character >> 18);
    append(0x80 | (character >> 12 & 0x3F));
    append(0x80 | (character >> 6 & 0x3F));
    append(0x80 | (character & 0x3F));
  }
}

bool isHighSurrogate(char32_t unit) {
  return unit >= 0xD800 && unit < 0xDC00;
}
bool isLowSurrogate(char32_t unit) {
  return unit >= 0xDC00 && unit < 0xE000;
}

/// Appends the characters of `text`, NUL included.
void appendUtf16(Bytes text, std::string* out) {
  const auto unit = [text](std::size_t index) {
    return static_cast<char32_t>(text[2 * index] << 8 | text[2 * index + 1]);
  };
  const std::size_t count = text.size() / 2;
  for (std::size_t index = 0; index < count; ++index) {
    char32_t character = unit(index);
    if (isHighSurrogate(character) && index + 1 < count && isLowSurrogate(unit(index + 1))) {
      ++index;
      character = 0x10000 + ((character - 0xD800) << 10) + (unit(index) - 0xDC00);
    } else if (isHighSurrogate(character) || isLowSurrogate(character)) {
      character = 0xFFFD;
    }
    appendUtf8(character, out);
  }
}

}  // namespace

void plainName(Bytes identifier, std::string* name) {
  name->clear();
  const std::string_view whole(reinterpret_cast<const char*>(identifier.data()), identifier.size());
  std::string_view kept = whole;
  if (whole.ends_with(".;1")) {
    kept.remove_suffix(3);
  } else if (whole.ends_with(";1")) {
    kept.remove_suffix(2);
  }
  for (char character : kept) {
    if (character >= 'A' && character <= 'Z') {
      character = static_cast<char>(character - 'A' + 'a');
    } else if (character == ';') {
      character = '.';
    }
    name->push_back(character);
  }
}

void jolietName(Bytes identifier, std::string* name) {
  name->clear();
  appendUtf16(identifier, name);
  if (name->size() > 2 && name->ends_with(";1")) name->resize(name->size() - 2);
  while (name->size() >= 2 && name->ends_with('.')) name->pop_back();
}

std::string utf8OfUtf16(Bytes text) {
  std::size_t end = 0;
  while (end + 1 < text.size() && (text[end] != 0 || text[end + 1] != 0)) end += 2;
  std::string result;
  appendUtf16(text.first(end), &result);
  return result;
}

void limitName(std::string* name) {
  if (name->size() <= kMaximumNameLength) return;
  std::size_t end = kMaximumNameLength;
  // At most three steps back: a longer run of continuation bytes is no UTF-8, and is cut where it
  // is.
  for (int step = 0; step < 3 && (static_cast<unsigned char>((*name)[end]) & 0xC0) == 0x80;
       ++step) {
    --end;
  }
  if ((static_cast<unsigned char>((*name)[end]) & 0xC0) == 0x80) end = kMaximumNameLength;
  name->resize(end);
}

bool isPermittedName(std::string_view name) {
  if (name.empty() || name == "." || name == "..") return false;
  return name.find('/') == std::string_view::npos && name.find('\0') == std::string_view::npos;
}

}  // namespace kelvane::isovolume
