// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/recording/mmc/read_sector.h"

#include "platform/recording/mmc/command.h"

namespace kelvane::mmc {

std::optional<Sector> readSector(Transport& transport, int32_t address) {
  const auto bits = static_cast<uint32_t>(address);
  const std::array<uint8_t, 10> commandBlock{0x28,
                                             0,
                                             static_cast<uint8_t>(bits >> 24),
                                             static_cast<uint8_t>(bits >> 16 & 0xFF),
                                             static_cast<uint8_t>(bits >> 8 & 0xFF),
                                             static_cast<uint8_t>(bits & 0xFF),
                                             0,
                                             0,
                                             1,
                                             0};
  Sector sector{};
  const Answer answer = ask(transport, commandBlock, sector);
  if (!answer.isGood() || answer.transferred != sector.size()) return std::nullopt;
  return sector;
}

}  // namespace kelvane::mmc
