// SPDX-License-Identifier: GPL-2.0-or-later
#include "virtualdrive/media/cd_track_at_once.h"

#include <algorithm>

#include "virtualdrive/media/cd_layout.h"

namespace kelvane::virtualdrive {
namespace {

/// The track whose next sector has the address `first`, or null. Makes the invisible track a
/// growing one where it is that one's turn; `begun` tells.
Track* trackAt(DiscState& disc, Lba first, TrackForm form, bool* begun) {
  *begun = false;
  for (auto& track : disc.tracks) {
    if (!track.complete && first == track.start + track.recorded) return &track;
  }
  const bool growing = !disc.tracks.empty() && disc.tracks.back().growsWithFile();
  if (growing || disc.tracks.size() >= kCdMostTracks || first != cdNextTrackStart(disc)) {
    return nullptr;
  }
  Track track;
  track.number = static_cast<int>(disc.tracks.size()) + 1;
  track.session = disc.openSession();
  track.start = first;
  track.form = form;
  disc.tracks.push_back(track);
  *begun = true;
  return &disc.tracks.back();
}

}  // namespace

std::optional<TrackForm> trackFormOf(const WriteParameters& parameters) {
  switch (parameters.dataBlockType()) {
    case 8:
      return TrackForm::Mode1;
    case 10:
      return TrackForm::Mode2Form1;
    default:
      return std::nullopt;
  }
}

Sense writeTrackAtOnce(DiscFolder& folder, Lba first, std::span<const std::uint8_t> data) {
  auto& disc = folder.disc;
  const auto form = trackFormOf(folder.drive.writeParameters);
  if (!form) return kIllegalModeForTrack;
  bool begun = false;
  auto* track = trackAt(disc, first, *form, &begun);
  if (track == nullptr) return kInvalidAddressForWrite;
  if (track->form != *form) return kIllegalModeForTrack;
  const auto count = static_cast<Lba>(data.size() / kSectorBytes);
  const auto limit = track->reserved > 0 ? track->end() : disc.capacity;
  if (count > limit - first) return kEndOfUserArea;
  // The description of a new track precedes its data; the data of a reserved track precedes the new
  // count.
  if (begun && !folder.storeDisc()) return kWriteError;
  if (!folder.sectors().write(first, data)) return kWriteError;
  track->recorded += count;
  disc.fileSectors = std::max(disc.fileSectors, first + count);
  if (track->reserved > 0 && !folder.storeDisc()) return kWriteError;
  return kGood;
}

Sense completeTrack(DiscFolder& folder, Track& track) {
  auto& disc = folder.disc;
  const auto wanted = track.reserved > 0 ? track.reserved
                                         : std::min(std::max(track.recorded, kShortestCdTrack),
                                                    disc.capacity - track.start);
  const auto end = track.start + wanted;
  if (end > disc.fileSectors) {
    if (!folder.sectors().resize(end)) return kWriteError;
    disc.fileSectors = end;
  }
  track.recorded = wanted;
  track.complete = true;
  return folder.storeDisc() ? kGood : kWriteError;
}

Sense reserveCdTrack(DiscFolder& folder, Lba sectors) {
  auto& disc = folder.disc;
  const auto form = trackFormOf(folder.drive.writeParameters);
  if (!form) return kIllegalModeForTrack;
  if (!disc.tracks.empty() && disc.tracks.back().growsWithFile()) return kCommandSequence;
  if (disc.tracks.size() >= kCdMostTracks) return kNoMoreTracks;
  Track track;
  track.number = static_cast<int>(disc.tracks.size()) + 1;
  track.session = disc.openSession();
  track.start = cdNextTrackStart(disc);
  track.reserved = std::max(sectors, kShortestCdTrack);
  track.form = *form;
  if (track.reserved > disc.capacity - track.start) return kEndOfUserArea;
  disc.tracks.push_back(track);
  return folder.storeDisc() ? kGood : kWriteError;
}

}  // namespace kelvane::virtualdrive
