// SPDX-License-Identifier: GPL-2.0-or-later
#include "virtualdrive/media/cd_session_at_once.h"

#include <algorithm>
#include <optional>

#include "virtualdrive/media/cd_layout.h"
#include "virtualdrive/media/track_writing.h"
#include "virtualdrive/msf.h"

namespace kelvane::virtualdrive {
namespace {

constexpr std::size_t kLineBytes = 8;

/// One line of a cue sheet.
struct CueLine {
  std::uint8_t control;  // control nibble and ADR
  std::uint8_t track;    // 0: lead-in, AAh: lead-out
  std::uint8_t index;
  std::uint8_t form;
  Lba address;
};

CueLine lineAt(std::span<const std::uint8_t> sheet, std::size_t at) {
  return {sheet[at], sheet[at + 1], sheet[at + 2], sheet[at + 3],
          fromMsf({sheet[at + 5], sheet[at + 6], sheet[at + 7]})};
}

std::optional<TrackForm> formOf(const CueLine& line) {
  const bool dataTrack = (line.control & 0x4F) == 0x41;
  const bool audioTrack = (line.control & 0xDF) == 0x01;
  switch (line.form & 0x3F) {
    case 0x00:
    case 0x01:  // the gap's sectors are silence, in the place of what is sent
      return audioTrack ? std::optional(TrackForm::Audio) : std::nullopt;
    case 0x10:
    case 0x14:  // the gap's sectors are made by the drive, in the place of what is sent
      return dataTrack ? std::optional(TrackForm::Mode1) : std::nullopt;
    case 0x20:
    case 0x24:
      return dataTrack ? std::optional(TrackForm::Mode2Form1) : std::nullopt;
    default:
      return std::nullopt;
  }
}

/// Lines that announce no sectors: catalogue numbers and the lead-in.
bool isWithoutSectors(const CueLine& line) {
  return (line.control & 0x0F) != 1 || line.track == 0;
}

/// Parses the lines. Empty where they announce what this drive cannot write.
std::optional<CueSheet> parse(std::span<const std::uint8_t> bytes) {
  CueSheet sheet;
  for (std::size_t at = 0; at < bytes.size(); at += kLineBytes) {
    const auto line = lineAt(bytes, at);
    if (isWithoutSectors(line)) continue;
    if (sheet.leadOut != 0) return std::nullopt;
    auto& tracks = sheet.tracks;
    if (line.index == 1 || line.track == 0xAA) {
      if (!tracks.empty() && tracks.back().sectors == 0) {
        tracks.back().sectors = line.address - tracks.back().start;
      }
    }
    if (line.track == 0xAA) {
      sheet.leadOut = line.address;
      continue;
    }
    const auto form = formOf(line);
    if (!form) return std::nullopt;
    if (line.index == 0 && !tracks.empty() && tracks.back().sectors == 0) {
      tracks.back().sectors = line.address - tracks.back().start;
    }
    if (line.index != 1) continue;
    if (line.track != tracks.size() + 1) return std::nullopt;
    tracks.push_back({line.address, 0, *form});
  }
  return sheet;
}

bool fits(const CueSheet& sheet, const DiscState& disc) {
  if (sheet.tracks.empty() || sheet.tracks.size() > kMostTracks) return false;
  if (sheet.tracks.front().start != 0 || sheet.leadOut > cdLastPossibleLeadOut(disc)) return false;
  Lba free = 0;
  for (const auto& track : sheet.tracks) {
    if (track.start < free || track.sectors < kShortestCdTrack) return false;
    free = track.start + track.sectors;
  }
  return free == sheet.leadOut && sheet.leadOut <= disc.capacity;
}

/// The form of what has to come at that address: that of the first track which ends behind it.
TrackForm formAt(const CueSheet& sheet, Lba at) {
  for (const auto& track : sheet.tracks) {
    if (at < track.start + track.sectors) return track.form;
  }
  return sheet.tracks.back().form;
}

}  // namespace

std::size_t blockBytesOfCueSheet(const DiscState& disc, Lba at) {
  return disc.cueSheet ? sectorBytesOf(formAt(*disc.cueSheet, at)) : kSectorBytes;
}

Sense storeCueSheet(DiscFolder& folder, std::span<const std::uint8_t> sheet) {
  if (sheet.empty() || sheet.size() % kLineBytes != 0) return kParameterListLength;
  const auto parsed = parse(sheet);
  if (!parsed || !fits(*parsed, folder.disc)) return kInvalidFieldInParameters;
  folder.disc.cueSheet = *parsed;
  return folder.storeDisc() ? kGood : kWriteError;
}

Lba nextAddressOfCueSheet(const DiscState& disc) {
  const auto gapLeft = kCdGap - disc.cueSheet->gapWritten;
  return gapLeft > 0 ? -gapLeft : disc.reach();
}

Sense writeCueSheetData(DiscFolder& folder, Lba first, std::span<const std::uint8_t> data) {
  auto& disc = folder.disc;
  if (!disc.cueSheet) return kCommandSequence;
  if (first != nextAddressOfCueSheet(disc)) return kInvalidAddressForWrite;
  const auto form = formAt(*disc.cueSheet, first);
  const auto count = static_cast<Lba>(data.size() / sectorBytesOf(form));
  if (count > disc.cueSheet->leadOut - first) return kEndOfUserArea;
  // A command has sectors of one form.
  if (formAt(*disc.cueSheet, first + count - 1) != form) return kIllegalModeForTrack;
  const auto inGap = std::clamp(-first, 0, count);
  if (inGap > 0) {
    disc.cueSheet->gapWritten += inGap;
    if (!folder.storeDisc()) return kWriteError;
  }
  if (inGap == count) return kGood;
  const auto rest = data.subspan(static_cast<std::size_t>(inGap) * sectorBytesOf(form));
  auto* file = folder.fileOf(form);
  if (file == nullptr || !file->write(first + inGap, rest)) return kWriteError;
  disc.reachOf(form) = first + count;
  return disc.reach() == disc.cueSheet->leadOut ? endCueSheet(folder) : kGood;
}

Sense endCueSheet(DiscFolder& folder) {
  auto& disc = folder.disc;
  if (disc.reach() != disc.cueSheet->leadOut) return kIncompleteTrackInSession;
  for (const auto& announced : disc.cueSheet->tracks) {
    Track track;
    track.number = static_cast<int>(disc.tracks.size()) + 1;
    track.start = announced.start;
    track.recorded = announced.sectors;
    track.complete = true;
    track.form = announced.form;
    disc.tracks.push_back(track);
  }
  disc.sessions.push_back({1, 1, static_cast<int>(disc.tracks.size()), disc.cueSheet->leadOut});
  disc.cueSheet.reset();
  disc.finalized = !folder.drive.writeParameters.multiSession() ||
                   cdNextTrackStart(disc) + kShortestCdTrack > disc.capacity;
  return folder.storeDisc() ? kGood : kWriteError;
}

}  // namespace kelvane::virtualdrive
