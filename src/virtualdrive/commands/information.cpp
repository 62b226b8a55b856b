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

enum class DiscStatus : unsigned { Blank = 0, Appendable = 1, Complete = 2 };
enum class SessionState : unsigned { Empty = 0, Incomplete = 1, Complete = 3 };

DiscStatus statusOf(const DiscState& disc) {
  if (disc.blank()) return DiscStatus::Blank;
  return disc.finalized ? DiscStatus::Complete : DiscStatus::Appendable;
}

SessionState lastSessionState(const DiscState& disc) {
  if (disc.finalized) return SessionState::Complete;
  return disc.openSessionHasTracks() || disc.cueSheetBegun() ? SessionState::Incomplete
                                                             : SessionState::Empty;
}

struct LastSession {
  std::size_t number;
  int firstTrack;
  int lastTrack;
};

/// The last session with the invisible track in it, as READ DISC INFORMATION counts.
LastSession lastSession(const DiscState& disc, const std::vector<TrackView>& tracks) {
  const auto closed = disc.sessions.size();
  if (disc.finalized) {
    return {closed, disc.sessions.back().firstTrack, disc.sessions.back().lastTrack};
  }
  const int first = disc.sessions.empty() ? 1 : disc.sessions.back().lastTrack + 1;
  return {closed + 1, first, tracks.empty() ? first : std::max(first, tracks.back().number)};
}

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
                                std::uint32_t address) {
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
  if (found == nullptr || lba >= found->start + std::max(found->size, 1) + kCdRunOut)
    return nullptr;
  return found;
}

}  // namespace

// MMC-5, 6.22
CommandResult readDiscInformation(Command& command) {
  if ((command.block[1] & 0x07) != 0) return refuse(kInvalidFieldInCommand);
  const auto& disc = command.disc();
  const auto last = lastSession(disc, command.rules.tracks(disc));
  AnswerBytes bytes;
  bytes.u16(32);
  bytes.u8((command.rules.erasable() ? 0x10U : 0U) |
           static_cast<unsigned>(lastSessionState(disc)) << 2 |
           static_cast<unsigned>(statusOf(disc)));
  bytes.u8(1).u8(static_cast<unsigned>(last.number) & 0xFF);
  bytes.u8(static_cast<unsigned>(last.firstTrack)).u8(static_cast<unsigned>(last.lastTrack));
  bytes.u8(0x20);  // unrestricted use; neither identification nor bar code
  bytes.u8(0x00);  // CD-DA or CD-ROM
  bytes.u8(static_cast<unsigned>(last.number) >> 8).u8(0).u8(0);
  bytes.u32(0);
  if (disc.finalized) {
    bytes.u32(0xFFFFFFFF).u32(0xFFFFFFFF);
  } else {
    const bool first = disc.sessions.empty();
    const auto leadIn =
        (first ? 0 : disc.sessions.back().leadOut + cdLeadOutToNextSession(disc.sessions.size())) -
        kCdGap - kCdLeadIn;
    if (first)
      bytes.bytes({0, 97, 50, 0});
    else
      putTime(bytes, leadIn);
    putTime(bytes, cdLastPossibleLeadOut(disc));
  }
  bytes.zeros(8).u8(0).u8(0);
  return answer(command, bytes, read16(command.block, 7));
}

// MMC-5, 6.28
CommandResult readTrackInformation(Command& command) {
  const auto type = command.block[1] & 0x03U;
  if (type == 3) return refuse(kInvalidFieldInCommand);
  const auto tracks = command.rules.tracks(command.disc());
  const auto* track = addressedTrack(tracks, type, read32(command.block, 2));
  if (track == nullptr) return refuse(type == 0 ? kAddressOutOfRange : kInvalidFieldInCommand);

  const bool blank = track->recorded == 0;
  const auto dataMode = static_cast<unsigned>(track->form);
  AnswerBytes bytes;
  bytes.u16(34);
  bytes.u8(static_cast<unsigned>(track->number) & 0xFF);
  bytes.u8(static_cast<unsigned>(track->session) & 0xFF);
  bytes.u8(0);
  bytes.u8(0x04);  // data track, written uninterrupted
  bytes.u8((track->reserved ? 0x80U : 0U) | (blank ? 0x40U : 0U) |
           (track->invisible ? 0x0FU : dataMode));
  bytes.u8((track->recorded > 0 ? 0x02U : 0U) | (track->nextWritable ? 0x01U : 0U));
  bytes.u32(static_cast<std::uint32_t>(track->start));
  bytes.u32(static_cast<std::uint32_t>(track->nextWritable.value_or(0)));
  bytes.u32(static_cast<std::uint32_t>(track->free));
  bytes.u32(0);
  bytes.u32(static_cast<std::uint32_t>(track->size));
  bytes.u32(static_cast<std::uint32_t>(std::max(0, track->start + track->recorded - 1)));
  bytes.zeros(4);
  return answer(command, bytes, read16(command.block, 7));
}

// MMC-5, 6.25: the last sector of the last closed session.
CommandResult readCapacity(Command& command) {
  const auto& sessions = command.disc().sessions;
  AnswerBytes bytes;
  bytes.u32(sessions.empty() ? 0U : static_cast<std::uint32_t>(sessions.back().leadOut - 1));
  bytes.u32(kSectorBytes);
  return answer(command, bytes, 8);
}

// MMC-5, 6.24
CommandResult readFormatCapacities(Command& command) {
  const auto& disc = command.disc();
  const bool loaded = !command.folder.drive.trayOpen;
  const bool blank = loaded && disc.blank();
  // 1: blank, capacity when formatted; 2: recorded; 3: no medium, the most there can be.
  const unsigned kind = !loaded ? 3U : blank ? 1U : 2U;
  const auto sectors = !loaded                          ? kMaximalCdCapacity
                       : blank || disc.sessions.empty() ? disc.capacity
                                                        : disc.sessions.back().leadOut;
  AnswerBytes bytes;
  bytes.u32(8).u32(static_cast<std::uint32_t>(sectors)).u32(kind << 24 | kSectorBytes);
  return answer(command, bytes, read16(command.block, 7));
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
