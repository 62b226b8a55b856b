// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <algorithm>
#include <optional>
#include <span>

#include "virtualdrive/media/medium_rules.h"

namespace kelvane::virtualdrive {

// What media have in common whose data comes in tracks, one behind the other.

/// More tracks than two digits can count have no place in the disc's description.
inline constexpr std::size_t kMostTracks = 99;

/// The tracks of the disc, and the invisible one where there can be one, beginning at
/// `newTrackStart`.
std::vector<TrackView> viewsOfTracks(const DiscState& disc, Lba newTrackStart);

/// The track whose next sector has a given address.
struct TrackInTurn {
  /// Null where there is none.
  Track* track = nullptr;
  /// It was the invisible one and has just been put into the list.
  bool begun = false;
};

/// Finds it. `newTrackStart` is where a new track would begin, empty where none can.
TrackInTurn trackInTurnAt(DiscState& disc, Lba first, std::optional<Lba> newTrackStart);

/// Writes at that track's end. Nothing is written where not all of it fits (5/63/00).
Sense appendTo(const TrackInTurn& place, DiscFolder& folder, std::span<const std::uint8_t> data);

/// Gives a track exactly so many sectors, with zeros at its end, and completes it.
Sense completeWith(Lba sectors, DiscFolder& folder, Track& track);

/// Completes the track that a CLOSE TRACK means by `number`; FFh is the last. `complete` is how.
/// What is complete already, or the invisible track, is left alone.
template <typename Complete>
Sense closeNumberedTrack(DiscFolder& folder, int number, Complete complete) {
  auto& tracks = folder.disc.tracks;
  const auto count = static_cast<int>(tracks.size());
  if (number == 0xFF) number = std::max(count, 1);
  if (number == count + 1) return kGood;
  if (number < 1 || number > count) return kInvalidFieldInCommand;
  auto& track = tracks[static_cast<std::size_t>(number - 1)];
  return track.complete ? kGood : complete(track);
}

/// Why the open session cannot be closed: a track of it is not complete.
Sense checkTracksComplete(const DiscState& disc);

/// Puts the open session, which has tracks, into the list of closed ones.
void addClosedSession(DiscState& disc, Lba leadOut);

}  // namespace kelvane::virtualdrive
