// SPDX-License-Identifier: GPL-2.0-or-later
// READ (MMC-5, 6.17 and 6.18) and READ CD (6.19).
#include <algorithm>

#include "virtualdrive/commands/command.h"

namespace kelvane::virtualdrive {
namespace {

CommandResult readSectors(Command& command, std::uint32_t address, std::uint32_t count) {
  const auto& disc = command.disc();
  if (address > INT32_MAX || count > INT32_MAX) return refuse(kAddressOutOfRange);
  const auto first = static_cast<Lba>(address);
  if (count == 0) return {};
  const auto sense = command.rules.checkReadable(disc, first, static_cast<Lba>(count));
  if (!sense.good()) return refuse(sense);
  const auto wanted = std::size_t{count} * kSectorBytes;
  const auto data = command.dataIn.first(std::min(command.dataIn.size(), wanted));
  if (!command.folder.sectors().read(first, data)) return refuse(kUnrecoveredRead);
  return {kGood, data.size()};
}

}  // namespace

CommandResult read10(Command& command) {
  return readSectors(command, read32(command.block, 2), read16(command.block, 7));
}

CommandResult read12(Command& command) {
  return readSectors(command, read32(command.block, 2), read32(command.block, 6));
}

// The user data of data sectors only: there is no audio on these discs, and headers and parity are
// not kept.
CommandResult readCd(Command& command) {
  if (!isCd(command.disc().medium)) return refuse(kIncompatibleMedium);
  const auto sectorType = (command.block[1] >> 2) & 0x07;
  if (sectorType == 1) return refuse(kIllegalModeForTrack);
  const auto parts = command.block[9] & 0xFE;
  const auto subchannel = command.block[10] & 0x07;
  if ((parts != 0x10 && parts != 0) || subchannel != 0) return refuse(kInvalidFieldInCommand);
  const auto count = read24(command.block, 6);
  if (parts == 0) return {};
  return readSectors(command, read32(command.block, 2), count);
}

}  // namespace kelvane::virtualdrive
