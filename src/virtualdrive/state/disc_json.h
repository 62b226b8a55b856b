// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "virtualdrive/state/disc_state.h"

namespace kelvane::virtualdrive {

/// The description of a disc, `disc.json`, UTF-8, one object:
///
///     format            "kelvane-disc", so that no other file is taken for one
///     version           1; a reader refuses higher numbers, because it could spoil what it does
///                       not understand
///     medium            "cd-r", "cd-rw", "dvd-r", "dvd-rw", "dvd+rw" or "dvd+r"
///     capacity_sectors  sectors of 2048 bytes that one session on the blank disc can hold
///     finalized         true when the last session was closed for good
///     blanking          true from the beginning of a BLANK or FORMAT UNIT until the sectors are
///                       gone: who loads such a disc ends the work, so that a kill in between
///                       leaves the disc that was to be and no half one
///     tracks            list, in order; the position is the number, counted from 1
///       session         the session it belongs to, counted from 1
///       start           LBA of the first sector
///       sectors         sectors recorded. Absent where the track may still grow: then it reaches
///                       to the end of its file, rounded down to whole sectors. So a
///                       WRITE touches that file alone, is as fast as the file system, and counts
///                       exactly as far as it got when its process is killed
///       reserved        sectors set aside for it; 0 where nothing was reserved
///       complete        true: no more data fits in
///       form            0: audio; 1: mode 1; 2: mode 2 form 1 (CD-ROM XA)
///       at_once         true on a DVD that is written disc at once; absent elsewhere
///     sessions          list of the closed sessions, in order; the position is the number, counted
///                       from 1
///       first_track, last_track
///       lead_out        LBA where its lead-out begins
///     cue_sheet         only while a session is written at once to a CD
///       lead_out        LBA where the lead-out will begin
///       gap_written     sectors of the 150 before LBA 0 that have arrived
///       tracks          list of start, sectors, form
///     formatted         only on a formatted DVD+RW and on a DVD-RW in restricted overwrite mode,
///                       which have no tracks and sessions
///       sectors         where the lead-out begins; whole blocks of 16
///       growing         true: the area is at least as long as the file `sectors` too
///     minimally_blanked true on a DVD-RW whose last blanking was the minimal one; absent elsewhere
///
/// Sectors of data stand in the file `sectors`, 2048 bytes each, those of audio in the file
/// `audio`, 2352 bytes each, both at the place that their LBA gives. `audio` is there once there is
/// audio.
///
/// The lengths of the gaps between tracks and sessions are not written down: they follow from the
/// medium.
std::string discToJson(const DiscState& disc);

/// What is to be done about a description.
struct ParsedDisc {
  DiscState disc;
  /// Something was interrupted: the files of sectors have to be cut to what `disc` says and the
  /// description be stored again.
  bool cutFiles = false;
};

/// Parses a description and checks it against itself and against the lengths of the files of
/// sectors. Empty with words in `error` where it is damaged, contradicts itself or the file, or is
/// of a newer version.
std::optional<ParsedDisc> discFromJson(std::string_view text, const FileLengths& files,
                                       std::string* error);

/// The description that a blanking stores before it removes the sectors.
std::string blankingToJson(const DiscState& disc);

}  // namespace kelvane::virtualdrive
