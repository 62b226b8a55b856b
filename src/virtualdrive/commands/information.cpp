// SPDX-License-Identifier: GPL-2.0-or-later
// What is on the disc and what fits on it.
#include <algorithm>
#include <optional>

#include "virtualdrive/commands/command.h"
#include "virtualdrive/commands/drive_facts.h"
#include "virtualdrive/media/cd_layout.h"
#include "virtualdrive/msf.h"

namespace kelvane::virtualdrive {
namespace {

void putTime(AnswerBytes& bytes, Lba lba) {
  const auto time = toMsf(lba);
  bytes.bytes({0, time.minute, time.second, time.frame});
}

/// The first track of which `wanted` holds.
template <typename Predicate>
const TrackView* findTrack(const std::vector<TrackView>& tracks, Predicate wanted) {
  const auto found = std::ranges::find_if(tracks, wanted);
  return found == tracks.end() ? nullptr : &*found;
}

/// The track that READ TRACK INFORMATION means by an address of one of three types.
const TrackView* addressedTrack(const std::vector<TrackView>& tracks, unsigned type,
                                std::uint32_t address, Lba runOut) {
  if (type == 1 && address == 0xFF) {
    return findTrack(tracks, [](const auto& t) { return t.nextWritable && !t.reserved; });
  }
  if (type == 1) {
    return findTrack(
        tracks, [&](const auto& t) { return static_cast<std::uint32_t>(t.number) == address; });
  }
  if (type == 2) {
    return findTrack(
        tracks, [&](const auto& t) { return static_cast<std::uint32_t>(t.session) == address; });
  }
  const auto lba = static_cast<std::int64_t>(static_cast<std::int32_t>(address));
  const TrackView* found = nullptr;
  for (const auto& track : tracks) {
    if (track.start <= lba) found = &track;
  }
  const bool outside = found == nullptr || lba >= found->start + std::max(found->size, 1) + runOut;
  return outside ? nullptr : found;
}

/// Where the lead-in of the next session begins, and the latest place for its lead-out. DVDs have
/// no such times.
void putCdTimes(AnswerBytes& bytes, const DiscState& disc) {
  if (!isCd(disc.medium)) {
    bytes.zeros(8);
    return;
  }
  if (disc.finalized) {
    bytes.u32(0xFFFFFFFF).u32(0xFFFFFFFF);
    return;
  }
  if (disc.sessions.empty()) {
    bytes.bytes({0, 97, 50, 0});
  } else {
    const auto gap = cdLeadOutToNextSession(disc.sessions.size());
    putTime(bytes, disc.sessions.back().leadOut + gap - kCdGap - kCdLeadIn);
  }
  putTime(bytes, cdLastPossibleLeadOut(disc));
}

}  // namespace

// MMC-5, 6.22
CommandResult readDiscInformation(Command& command) {
  if ((command.block[1] & 0x07) != 0) return refuse(kInvalidFieldInCommand);
  const auto& disc = command.disc();
  const auto summary = command.rules.summary(disc);
  const auto sessions = static_cast<unsigned>(summary.sessions);
  const auto first = static_cast<unsigned>(summary.firstTrackOfLastSession);
  const auto last = static_cast<unsigned>(summary.lastTrackOfLastSession);
  AnswerBytes bytes;
  bytes.u16(32);
  bytes.u8((command.rules.erasable() ? 0x10U : 0U) |
           static_cast<unsigned>(summary.lastSession) << 2 | static_cast<unsigned>(summary.status));
  bytes.u8(1).u8(sessions & 0xFF).u8(first & 0xFF).u8(last & 0xFF);
  // Unrestricted use; neither identification nor bar code.
  bytes.u8(0x20 | static_cast<unsigned>(summary.backgroundFormat));
  bytes.u8(0x00);  // CD-DA or CD-ROM; without meaning for DVDs
  bytes.u8(sessions >> 8).u8(first >> 8).u8(last >> 8);
  bytes.u32(0);
  putCdTimes(bytes, disc);
  bytes.zeros(8).u8(0).u8(0);
  return answer(command, bytes, read16(command.block, 7));
}

// MMC-5, 6.28
CommandResult readTrackInformation(Command& command) {
  const auto type = command.block[1] & 0x03U;
  if (type == 3) return refuse(kInvalidFieldInCommand);
  const auto tracks = command.rules.tracks(command.disc());
  const auto runOut = isCd(command.disc().medium) ? kCdRunOut : 0;
  const auto* track = addressedTrack(tracks, type, read32(command.block, 2), runOut);
  if (track == nullptr) return refuse(type == 0 ? kAddressOutOfRange : kInvalidFieldInCommand);

  const bool blank = track->recorded == 0;
  const bool audio = track->form == TrackForm::Audio;
  // Of audio, and of what nobody has written yet, there is no data mode.
  const auto dataMode = track->invisible || audio ? 0x0FU : static_cast<unsigned>(track->form);
  const bool inPackets = (track->stateBits & 0x30) != 0;
  AnswerBytes bytes;
  bytes.u16(34);
  bytes.u8(static_cast<unsigned>(track->number) & 0xFF);
  bytes.u8(static_cast<unsigned>(track->session) & 0xFF);
  bytes.u8(0);
  bytes.u8(audio ? 0x00 : 0x04);  // audio of two channels; data, written without interruption
  bytes.u8((track->reserved ? 0x80U : 0U) | (blank ? 0x40U : 0U) | track->stateBits | dataMode);
  bytes.u8((track->recorded > 0 ? 0x02U : 0U) | (track->nextWritable ? 0x01U : 0U));
  bytes.u32(static_cast<std::uint32_t>(track->start));
  bytes.u32(static_cast<std::uint32_t>(track->nextWritable.value_or(0)));
  bytes.u32(static_cast<std::uint32_t>(track->free));
  bytes.u32(inPackets ? kDvdBlockSectors : 0);
  bytes.u32(static_cast<std::uint32_t>(track->size));
  bytes.u32(static_cast<std::uint32_t>(std::max(0, track->start + track->recorded - 1)));
  bytes.zeros(4);
  return answer(command, bytes, read16(command.block, 7));
}

// MMC-5, 6.25: the last sector of the last closed session.
CommandResult readCapacity(Command& command) {
  const auto end = readableEnd(command.disc());
  AnswerBytes bytes;
  bytes.u32(static_cast<std::uint32_t>(std::max(end - 1, 0)));
  bytes.u32(kSectorBytes);
  return answer(command, bytes, 8);
}

// MMC-5, 6.21: sectors reach the file before WRITE returns, so the buffer is always empty.
CommandResult readBufferCapacity(Command& command) {
  const bool inBlocks = (command.block[1] & 0x01) != 0;
  const auto size = static_cast<std::uint32_t>(
      inBlocks ? kBufferBytes / static_cast<int>(kSectorBytes) : kBufferBytes);
  AnswerBytes bytes;
  bytes.u16(10).u8(0).u8(inBlocks ? 1 : 0);
  bytes.u32(inBlocks ? 0 : size).u32(size);
  return answer(command, bytes, read16(command.block, 7));
}

}  // namespace kelvane::virtualdrive
