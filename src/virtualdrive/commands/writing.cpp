// SPDX-License-Identifier: GPL-2.0-or-later
// Whatever changes the disc. What may be done is the medium's matter; here is only the form of the
// commands.
#include "virtualdrive/commands/command.h"

namespace kelvane::virtualdrive {
namespace {

CommandResult writeSectors(Command& command, std::uint32_t address, std::uint32_t count) {
  if (count == 0) return {};
  const auto blockBytes = command.rules.blockBytes(command.folder, static_cast<Lba>(address));
  const auto bytes = std::uint64_t{count} * blockBytes;
  if (command.dataOut.size() < bytes) return refuse(kInvalidFieldInCommand);
  const auto data = command.dataOut.first(static_cast<std::size_t>(bytes));
  // The gap before LBA 0 has negative addresses (MMC-5, 4.3.7), which wrap around in the block.
  const auto sense = command.rules.write(command.folder, static_cast<Lba>(address), data);
  return {sense, sense.good() ? data.size() : 0};
}

}  // namespace

// MMC-5, 6.44
CommandResult write10(Command& command) {
  return writeSectors(command, read32(command.block, 2), read16(command.block, 7));
}

// MMC-5, 6.45
CommandResult write12(Command& command) {
  return writeSectors(command, read32(command.block, 2), read32(command.block, 6));
}

// MMC-5, 6.41
CommandResult synchronizeCache(Command& command) {
  return refuse(command.rules.endWriting(command.folder));
}

// MMC-5, 6.31
CommandResult reserveTrack(Command& command) {
  const auto sectors = read32(command.block, 5);
  if ((command.block[1] & 0x03) != 0 || sectors == 0) return refuse(kInvalidFieldInCommand);
  if (sectors > INT32_MAX) return refuse(kEndOfUserArea);
  return refuse(command.rules.reserveTrack(command.folder, static_cast<Lba>(sectors)));
}

// MMC-5, 6.33
CommandResult sendCueSheet(Command& command) {
  const auto length = read24(command.block, 6);
  if (command.dataOut.size() < length) return refuse(kParameterListLength);
  const auto sense = command.rules.takeCueSheet(command.folder, command.dataOut.first(length));
  return {sense, sense.good() ? length : 0};
}

// MMC-5, 6.35: there is no laser to calibrate.
CommandResult sendOpcInformation(Command& command) {
  const auto length = read16(command.block, 7);
  const bool calibrate = (command.block[1] & 0x01) != 0;
  if (calibrate && length != 0) return refuse(kInvalidFieldInCommand);
  if (length % 8 != 0 || command.dataOut.size() < length) return refuse(kParameterListLength);
  return {kGood, length};
}

// MMC-5, 6.3
CommandResult closeTrackSession(Command& command) {
  switch (command.block[2] & 0x07) {
    case 0:
      return refuse(command.rules.stopFormatting(command.folder));
    case 1:
      return refuse(command.rules.closeTrack(command.folder, read16(command.block, 4)));
    case 2:
      return refuse(command.rules.closeSession(command.folder));
    case 5:
    case 6:
      return refuse(command.rules.finalize(command.folder));
    default:
      return refuse(kInvalidFieldInCommand);
  }
}

// MMC-5, 6.2: the whole disc or the minimum; parts of a disc cannot be blanked by this drive.
CommandResult blank(Command& command) {
  switch (command.block[1] & 0x07) {
    case 0:
      return refuse(command.rules.blank(command.folder, BlankExtent::Full));
    case 1:
      return refuse(command.rules.blank(command.folder, BlankExtent::Minimal));
    default:
      return refuse(kInvalidFieldInCommand);
  }
}

}  // namespace kelvane::virtualdrive
