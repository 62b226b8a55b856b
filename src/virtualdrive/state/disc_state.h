// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "virtualdrive/medium_kind.h"

namespace kelvane::virtualdrive {

/// How the sectors of a track are recorded on a CD.
enum class TrackForm : std::uint8_t {
  Audio = 0,
  Mode1 = 1,
  /// Mode 2 form 1, the sectors of CD-ROM XA.
  Mode2Form1 = 2,
};

/// What programs send and receive of a sector of that form.
constexpr std::size_t sectorBytesOf(TrackForm form) {
  return form == TrackForm::Audio ? kAudioSectorBytes : kSectorBytes;
}

/// The lengths of a disc's two files of sectors, in bytes.
struct FileLengths {
  std::uint64_t sectors = 0;
  std::uint64_t audio = 0;
  bool operator==(const FileLengths&) const = default;
};

struct Track {
  int number = 1;
  /// The session it belongs to, counted from 1.
  int session = 1;
  Lba start = 0;
  /// Sectors that hold data.
  Lba recorded = 0;
  /// Sectors set aside for it by RESERVE TRACK; 0 where nothing was reserved.
  Lba reserved = 0;
  /// A complete track takes no more data.
  bool complete = false;
  TrackForm form = TrackForm::Mode1;
  /// The only track of a DVD that is written disc at once: it ends with its session.
  bool atOnce = false;

  /// Sectors the track occupies, its run-out apart.
  Lba size() const { return reserved > recorded ? reserved : recorded; }
  Lba end() const { return start + size(); }
  bool growsWithFile() const { return !complete && reserved == 0; }
};

/// A closed session: it has a lead-in and a lead-out.
struct Session {
  int number = 1;
  int firstTrack = 1;
  int lastTrack = 1;
  /// Where its lead-out begins.
  Lba leadOut = 0;
};

/// A track of a session that is written at once, as its cue sheet announces it.
struct CueTrack {
  Lba start = 0;
  Lba sectors = 0;
  TrackForm form = TrackForm::Mode1;
};

/// The cue sheet of a session that is being written at once (MMC-5, 6.33 SEND CUE SHEET).
struct CueSheet {
  std::vector<CueTrack> tracks;
  Lba leadOut = 0;
  /// Sectors of the gap before the first track that have arrived, of 150. They precede LBA 0 and
  /// are not kept.
  Lba gapWritten = 0;
};

/// What formatting made of a DVD: one area from LBA 0 that can be overwritten.
struct Formatting {
  /// The area's length; whole blocks of 16 sectors. The lead-out begins behind it.
  Lba sectors = 0;
  /// Writing beyond the area's end makes it longer: on a DVD-RW the session is in its intermediate
  /// state, on a DVD+RW the background formatting runs.
  bool growing = false;
};

/// What is on a disc.
struct DiscState {
  MediumKind medium = MediumKind::CdR;
  /// Sectors that one session on the blank disc can hold.
  Lba capacity = kDefaultCdCapacity;
  /// Every track, in order of number and address. Only the last may be open to growth.
  std::vector<Track> tracks;
  /// The closed sessions. Tracks of a session that is not among them belong to the open session.
  std::vector<Session> sessions;
  /// Closed for good: nothing can be appended.
  bool finalized = false;
  std::optional<CueSheet> cueSheet;
  /// Present on a formatted DVD+RW, and on a DVD-RW that is in restricted overwrite mode. Such a
  /// disc has no tracks and sessions of its own.
  std::optional<Formatting> formatting;
  /// A DVD-RW whose last blanking was the minimal one: it can only be written at once.
  bool minimallyBlanked = false;
  /// Sectors that the file of data and the one of audio reach to; whole ones only. Not part of the
  /// description, they come from the files.
  Lba fileSectors = 0;
  Lba audioSectors = 0;

  bool blank() const {
    return tracks.empty() && sessions.empty() && !finalized && !formatting && !cueSheetBegun();
  }
  Lba& reachOf(TrackForm form) { return form == TrackForm::Audio ? audioSectors : fileSectors; }
  Lba reachOf(TrackForm form) const {
    return form == TrackForm::Audio ? audioSectors : fileSectors;
  }
  /// Where either file ends.
  Lba reach() const { return audioSectors > fileSectors ? audioSectors : fileSectors; }
  bool cueSheetBegun() const { return cueSheet && (cueSheet->gapWritten > 0 || reach() > 0); }
  /// The same medium without anything on it.
  DiscState asBlank() const {
    DiscState blankDisc;
    blankDisc.medium = medium;
    blankDisc.capacity = capacity;
    return blankDisc;
  }
  int openSession() const { return static_cast<int>(sessions.size()) + 1; }
  bool openSessionHasTracks() const {
    return !tracks.empty() && tracks.back().session == openSession();
  }
  /// A track that is known to be there, as those of a session are.
  const Track& track(int number) const { return tracks[static_cast<std::size_t>(number - 1)]; }
  /// Null where there is no such track.
  const Track* trackNumbered(int number) const {
    if (number < 1 || number > static_cast<int>(tracks.size())) return nullptr;
    return &tracks[static_cast<std::size_t>(number - 1)];
  }
};

}  // namespace kelvane::virtualdrive
