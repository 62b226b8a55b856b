// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/recording/mmc/tray.h"

#include <array>

#include "platform/recording/mmc/command.h"

namespace kelvane::mmc {
namespace {

constexpr uint8_t kLoadOrEject = 0x02;
constexpr uint8_t kStart = 0x01;

Answer startStopUnit(Transport& transport, uint8_t action) {
  const std::array<uint8_t, 6> commandBlock{0x1B, 0, 0, 0, action, 0};
  return tell(transport, commandBlock, kMechanicalTimeLimit);
}

}  // namespace

Answer allowMediumRemoval(Transport& transport) {
  constexpr std::array<uint8_t, 6> kCommandBlock{0x1E, 0, 0, 0, 0, 0};
  return instruct(transport, kCommandBlock);
}

Answer openTray(Transport& transport) {
  return startStopUnit(transport, kLoadOrEject);
}

Answer closeTray(Transport& transport) {
  return startStopUnit(transport, kLoadOrEject | kStart);
}

}  // namespace kelvane::mmc
