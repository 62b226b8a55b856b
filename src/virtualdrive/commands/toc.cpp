// SPDX-License-Identifier: GPL-2.0-or-later
// READ TOC/PMA/ATIP (MMC-5, 6.26).
#include <algorithm>
#include <optional>
#include <vector>

#include "virtualdrive/commands/command.h"
#include "virtualdrive/media/cd_layout.h"
#include "virtualdrive/msf.h"

namespace kelvane::virtualdrive {
namespace {

/// ADR 1, and what kind of track it is (MMC-5, 4.2.3.2): data written without interruption, or
/// audio of two channels. Neither may be copied.
constexpr unsigned kDataTrack = 0x14;
constexpr unsigned kAudioTrack = 0x10;
constexpr unsigned kLeadOutTrack = 0xAA;
constexpr Msf kLeadInOfDisc{97, 50, 0};

constexpr unsigned controlOf(TrackForm form) {
  return form == TrackForm::Audio ? kAudioTrack : kDataTrack;
}

void putAddress(AnswerBytes& bytes, Lba lba, bool asTime) {
  if (!asTime) {
    bytes.u32(static_cast<std::uint32_t>(lba));
    return;
  }
  const auto time = toMsf(lba);
  bytes.bytes({0, time.minute, time.second, time.frame});
}

/// A track as a TOC tells of it.
struct TocTrack {
  int number;
  int session;
  Lba start;
  unsigned control;
};

/// What there is to tell: the tracks of closed sessions.
struct Toc {
  std::vector<TocTrack> tracks;
  Lba leadOut = 0;
};

Toc tocOf(const Command& command) {
  const auto& disc = command.disc();
  const auto sessions = command.rules.sessions(disc);
  if (sessions.empty()) return {};
  Toc toc;
  toc.leadOut = sessions.back().leadOut;
  for (const auto& track : command.rules.tracks(disc)) {
    if (track.number <= sessions.back().lastTrack) {
      toc.tracks.push_back({track.number, track.session, track.start, controlOf(track.form)});
    }
  }
  const bool border = disc.medium == MediumKind::DvdR || disc.medium == MediumKind::DvdRw;
  // A DVD-R can have more sessions than a TOC can number. So drives tell of two: everything that
  // is older, and the last one.
  if (border && sessions.size() > 1) {
    toc.tracks = {{1, 1, 0, kDataTrack}, {2, 2, sessions.back().start, kDataTrack}};
  }
  return toc;
}

std::optional<AnswerBytes> formattedToc(const Toc& toc, unsigned startTrack, bool asTime) {
  if (toc.tracks.empty() || (startTrack > toc.tracks.size() && startTrack != kLeadOutTrack)) {
    return std::nullopt;
  }
  AnswerBytes bytes;
  bytes.u16(0).u8(1).u8(static_cast<unsigned>(toc.tracks.size()));
  for (const auto& track : toc.tracks) {
    const auto number = static_cast<unsigned>(track.number);
    if (number < startTrack) continue;
    bytes.u8(0).u8(track.control).u8(number).u8(0);
    putAddress(bytes, track.start, asTime);
  }
  // The lead-out is of the kind of the track before it.
  bytes.u8(0).u8(toc.tracks.back().control).u8(kLeadOutTrack).u8(0);
  putAddress(bytes, toc.leadOut, asTime);
  bytes.patch16(0, bytes.size() - 2);
  return bytes;
}

/// Which session is the last, and where its first track begins.
std::optional<AnswerBytes> multiSessionInformation(const Toc& toc, bool asTime) {
  if (toc.tracks.empty()) return std::nullopt;
  const auto last = toc.tracks.back().session;
  const auto first = std::ranges::find(toc.tracks, last, &TocTrack::session);
  AnswerBytes bytes;
  bytes.u16(10).u8(1).u8(static_cast<unsigned>(last));
  bytes.u8(0).u8(first->control).u8(static_cast<unsigned>(first->number)).u8(0);
  putAddress(bytes, first->start, asTime);
  return bytes;
}

/// The entries of the Q subchannel in the lead-ins (format 2).
class FullToc {
 public:
  FullToc() { bytes_.u16(0).u8(1).u8(0); }

  void addSession(const DiscState& disc, const Session& session) {
    const auto number = static_cast<unsigned>(session.number);
    const auto leadOut = toMsf(session.leadOut);
    const auto first = controlOf(disc.track(session.firstTrack).form);
    const auto last = controlOf(disc.track(session.lastTrack).form);
    add(number, first, 0xA0, {}, 0, {static_cast<std::uint8_t>(session.firstTrack), 0, 0});
    add(number, last, 0xA1, {}, 0, {static_cast<std::uint8_t>(session.lastTrack), 0, 0});
    add(number, last, 0xA2, {}, 0, leadOut);
    for (int i = session.firstTrack; i <= session.lastTrack; ++i) {
      const auto& track = disc.track(i);
      add(number, controlOf(track.form), static_cast<unsigned>(i), {}, 0, toMsf(track.start));
    }
    addPointers(disc, session);
    bytes_.patch8(3, number);
    bytes_.patch16(0, bytes_.size() - 2);
  }
  const AnswerBytes& bytes() const { return bytes_; }

 private:
  /// Mode 5 entries: where the next session can begin, and where the disc's lead-in does.
  void addPointers(const DiscState& disc, const Session& session) {
    const bool last = session.number == disc.sessions.back().number;
    if (last && disc.finalized) return;
    const auto number = static_cast<unsigned>(session.number);
    const auto closed = static_cast<std::size_t>(session.number);
    const auto next = session.leadOut + cdLeadOutToNextSession(closed);
    add(number, 0x54, 0xB0, toMsf(next - kCdGap), session.number == 1 ? 2 : 1,
        toMsf(cdLastPossibleLeadOut(disc)));
    if (session.number == 1) add(number, 0x54, 0xC0, {0, 0, 0}, 0, kLeadInOfDisc);
  }

  void add(unsigned session, unsigned control, unsigned point, const Msf& running, unsigned zero,
           const Msf& address) {
    bytes_.u8(session).u8(control).u8(0).u8(point);
    bytes_.u8(running.minute).u8(running.second).u8(running.frame).u8(zero);
    bytes_.u8(address.minute).u8(address.second).u8(address.frame);
  }

  AnswerBytes bytes_;
};

std::optional<AnswerBytes> fullToc(const DiscState& disc, unsigned firstSession) {
  const auto from = std::max(firstSession, 1U);
  if (from > disc.sessions.size()) return std::nullopt;
  FullToc toc;
  for (const auto& session : disc.sessions) {
    if (static_cast<unsigned>(session.number) >= from) toc.addSession(disc, session);
  }
  return toc.bytes();
}

/// What is pressed into the pregroove (format 4).
AnswerBytes atip(const DiscState& disc, bool rewritable) {
  const auto leadOut = toMsf(cdLastPossibleLeadOut(disc));
  AnswerBytes bytes;
  bytes.u16(26).u16(0);
  bytes.u8(rewritable ? 0xD1 : 0xD0).u8(0x00).u8(rewritable ? 0xC4 : 0x80).u8(0);
  bytes.bytes({kLeadInOfDisc.minute, kLeadInOfDisc.second, kLeadInOfDisc.frame, 0});
  bytes.bytes({leadOut.minute, leadOut.second, leadOut.frame, 0});
  if (rewritable)
    bytes.bytes({0x1A, 0x00, 0x00, 0});  // speeds 2x to 4x and beyond
  else
    bytes.zeros(4);
  bytes.zeros(8);
  return bytes;
}

}  // namespace

CommandResult readTocPmaAtip(Command& command) {
  const bool asTime = (command.block[1] & 0x02) != 0;
  // Old drives take the format from the control byte where the field is zero (SFF-8020).
  const auto format =
      (command.block[2] & 0x0F) != 0 ? command.block[2] & 0x0F : command.block[9] >> 6;
  const auto& disc = command.disc();
  std::optional<AnswerBytes> bytes;
  if (format == 0) bytes = formattedToc(tocOf(command), command.block[6], asTime);
  if (format == 1) bytes = multiSessionInformation(tocOf(command), asTime);
  // A DVD has neither subchannels nor a CD's pregroove.
  if (format == 2 && isCd(disc.medium)) bytes = fullToc(disc, command.block[6]);
  if (format == 4 && isCd(disc.medium)) bytes = atip(disc, command.rules.erasable());
  if (!bytes) return refuse(kInvalidFieldInCommand);
  return answer(command, *bytes, read16(command.block, 7));
}

}  // namespace kelvane::virtualdrive
