// SPDX-License-Identifier: GPL-2.0-or-later
#include "burn/volume_identifier.h"

namespace kelvane {
namespace {

constexpr size_t kLongestIdentifier = 32;

bool continuesCharacter(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

}  // namespace

std::string volumeIdentifierOf(const std::string& name) {
  if (name.size() <= kLongestIdentifier) return name;
  size_t end = kLongestIdentifier;
  while (end > 0 && continuesCharacter(name[end])) --end;
  return name.substr(0, end);
}

}  // namespace kelvane
