// SPDX-License-Identifier: GPL-2.0-or-later
// READ (MMC-5, 6.17 and 6.18) and READ CD (6.19).
#include <algorithm>

#include "virtualdrive/commands/command.h"

namespace kelvane::virtualdrive {
namespace {

/// What a command takes from the disc.
enum class Content { Data, Audio };

/// Whether all of these sectors, which are on the disc, are of that kind. What is in no track of
/// its own, as on a formatted DVD, is data.
bool areAll(Content content, const DiscState& disc, Lba first, Lba count) {
  return std::ranges::all_of(disc.tracks, [&](const Track& track) {
    const bool touched = track.start < first + count && first < track.start + track.recorded;
    return !touched || (track.form == TrackForm::Audio) == (content == Content::Audio);
  });
}

/// What the sector at that address is.
Content contentAt(const DiscState& disc, std::uint32_t address) {
  const auto at = static_cast<Lba>(std::min<std::uint32_t>(address, INT32_MAX - 1));
  return areAll(Content::Data, disc, at, 1) ? Content::Data : Content::Audio;
}

CommandResult readSectors(Command& command, Content content, std::uint32_t address,
                          std::uint32_t count) {
  const auto& disc = command.disc();
  if (address > INT32_MAX || count > INT32_MAX) return refuse(kAddressOutOfRange);
  const auto first = static_cast<Lba>(address);
  if (count == 0) return {};
  const auto sense = command.rules.checkReadable(disc, first, static_cast<Lba>(count));
  if (!sense.good()) return refuse(sense);
  if (!areAll(content, disc, first, static_cast<Lba>(count))) return refuse(kIllegalModeForTrack);
  const auto form = content == Content::Audio ? TrackForm::Audio : TrackForm::Mode1;
  const auto wanted = std::size_t{count} * sectorBytesOf(form);
  const auto data = command.dataIn.first(std::min(command.dataIn.size(), wanted));
  const auto* file = command.folder.fileOf(form);
  if (file == nullptr || !file->read(first, data)) return refuse(kUnrecoveredRead);
  return {kGood, data.size()};
}

}  // namespace

CommandResult read10(Command& command) {
  return readSectors(command, Content::Data, read32(command.block, 2), read16(command.block, 7));
}

CommandResult read12(Command& command) {
  return readSectors(command, Content::Data, read32(command.block, 2), read32(command.block, 6));
}

// The user data: headers and parity are not kept, and audio, which has none, is all user data.
CommandResult readCd(Command& command) {
  if (!isCd(command.disc().medium)) return refuse(kIncompatibleMedium);
  constexpr int kAnyType = 0;
  constexpr int kAudioType = 1;
  constexpr int kUserData = 0x10;
  const auto address = read32(command.block, 2);
  const auto expected = (command.block[1] >> 2) & 0x07;
  const auto content = expected == kAnyType     ? contentAt(command.disc(), address)
                       : expected == kAudioType ? Content::Audio
                                                : Content::Data;
  auto parts = command.block[9] & 0xFE;
  const bool errorFlags = (parts & 0x06) != 0;
  if (content == Content::Audio && !errorFlags) parts &= kUserData;
  const auto subchannel = command.block[10] & 0x07;
  if ((parts != kUserData && parts != 0) || subchannel != 0) return refuse(kInvalidFieldInCommand);
  if (parts == 0) return {};
  return readSectors(command, content, address, read24(command.block, 6));
}

}  // namespace kelvane::virtualdrive
