// SPDX-License-Identifier: GPL-2.0-or-later
// READ FORMAT CAPACITIES (MMC-5, 6.24) and FORMAT UNIT (6.4).
#include "virtualdrive/commands/command.h"

namespace kelvane::virtualdrive {
namespace {

/// Where there is no disc: the most that there can be.
FormatCapacities capacitiesWithoutDisc() {
  return {false, kMaximalCapacity, {}};
}

}  // namespace

CommandResult readFormatCapacities(Command& command) {
  const bool loaded = !command.folder.drive.trayOpen;
  const auto capacities =
      loaded ? command.rules.formatCapacities(command.disc()) : capacitiesWithoutDisc();
  // 1: unformatted, capacity when formatted; 2: formatted; 3: no medium.
  const unsigned kind = !loaded ? 3U : capacities.formatted ? 2U : 1U;
  AnswerBytes bytes;
  bytes.u32(static_cast<std::uint32_t>(8 + 8 * capacities.choices.size()));
  bytes.u32(static_cast<std::uint32_t>(capacities.sectors)).u32(kind << 24 | kSectorBytes);
  for (const auto& choice : capacities.choices) {
    bytes.u32(static_cast<std::uint32_t>(choice.sectors));
    bytes.u32(static_cast<std::uint32_t>(choice.type) << 26 | choice.parameter);
  }
  return answer(command, bytes, read16(command.block, 7));
}

CommandResult formatUnit(Command& command) {
  constexpr std::size_t kHeaderBytes = 4;
  constexpr std::size_t kDescriptorBytes = 8;
  constexpr std::size_t kListBytes = kHeaderBytes + kDescriptorBytes;
  // Format data, and the one format code there is.
  if ((command.block[1] & 0x1F) != 0x11) return refuse(kInvalidFieldInCommand);
  const auto list = command.dataOut;
  if (list.size() < kListBytes || read16(list, 2) != kDescriptorBytes) {
    return refuse(kParameterListLength);
  }
  const auto rest = read32(list, kHeaderBytes + 4);
  const FormatRequest request{static_cast<std::uint8_t>(rest >> 26), read32(list, kHeaderBytes),
                              rest & 0xFFFFFF};
  // Whether the program wants to wait (IMMED) does not matter: it is done at once.
  const auto sense = command.rules.format(command.folder, request);
  return {sense, sense.good() ? kListBytes : 0};
}

}  // namespace kelvane::virtualdrive
