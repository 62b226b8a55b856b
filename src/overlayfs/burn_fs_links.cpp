// SPDX-License-Identifier: GPL-2.0-or-later
// Symbolic links.
#include <unistd.h>

#include "overlayfs/burn_fs_delegate.h"

namespace kelvane {
namespace {

// How many characters a UTF-8 text has; a byte that belongs to none counts as one.
size_t characterCount(std::string_view text) {
  size_t count = 0;
  for (const char byte : text) count += (static_cast<unsigned char>(byte) & 0xc0) != 0x80;
  return count;
}

// `text` without its first `count` characters; nothing is left of a shorter one.
std::string_view withoutFirstCharacters(std::string_view text, size_t count) {
  size_t position = 0;
  while (position < text.size()) {
    const bool beginsCharacter = (static_cast<unsigned char>(text[position]) & 0xc0) != 0x80;
    if (beginsCharacter && count-- == 0) break;
    ++position;
  }
  return text.substr(position);
}

}  // namespace

bool BurnFSDelegate::createSymbolicLinkAtPath(const std::string& path,
                                              const std::string& destination,
                                              PosixError* /*error*/) {
  return symlink((tmpDirPath + destination).c_str(), (tmpDirPath + path).c_str()) == 0;
}

std::optional<std::string> BurnFSDelegate::destinationOfSymbolicLinkAtPath(const std::string& path,
                                                                           PosixError* /*error*/) {
  std::optional<std::string> text;
  if (fm.attributesOfItem(overlayPath(path)).has_value()) {
    text = fm.destinationOfSymbolicLink(overlayPath(path));
  } else if (discHasItem(path)) {
    text = fm.destinationOfSymbolicLink(discPath(path));
  }
  if (!text.has_value()) return std::nullopt;
  return std::string(withoutFirstCharacters(*text, characterCount(tmpDirPath)));
}

}  // namespace kelvane
