// SPDX-License-Identifier: GPL-2.0-or-later
#include "virtualdrive/media/cd_track_at_once.h"

#include <algorithm>

#include "virtualdrive/media/cd_layout.h"
#include "virtualdrive/media/track_writing.h"

namespace kelvane::virtualdrive {
std::optional<TrackForm> trackFormOf(const WriteParameters& parameters) {
  switch (parameters.dataBlockType()) {
    case 0:  // 2352 bytes, which in a data track would be raw sectors
      return parameters.dataTrack() ? std::nullopt : std::optional(TrackForm::Audio);
    case 8:
      return TrackForm::Mode1;
    case 10:
      return TrackForm::Mode2Form1;
    default:
      return std::nullopt;
  }
}

Sense writeTrackAtOnce(DiscFolder& folder, Lba first, std::span<const std::uint8_t> data) {
  const auto form = trackFormOf(folder.drive.writeParameters);
  if (!form) return kIllegalModeForTrack;
  const auto place = trackInTurnAt(folder.disc, first, cdNextTrackStart(folder.disc));
  if (place.track == nullptr) return kInvalidAddressForWrite;
  if (place.begun) place.track->form = *form;
  if (place.track->form != *form) return kIllegalModeForTrack;
  return appendTo(place, folder, data);
}

Sense completeTrack(DiscFolder& folder, Track& track) {
  const auto room = folder.disc.capacity - track.start;
  const auto wanted = std::min(std::max(track.recorded, kShortestCdTrack), room);
  return completeWith(track.reserved > 0 ? track.reserved : wanted, folder, track);
}

Sense reserveCdTrack(DiscFolder& folder, Lba sectors) {
  auto& disc = folder.disc;
  const auto form = trackFormOf(folder.drive.writeParameters);
  if (!form) return kIllegalModeForTrack;
  if (!disc.tracks.empty() && disc.tracks.back().growsWithFile()) return kCommandSequence;
  if (disc.tracks.size() >= kMostTracks) return kNoMoreTracks;
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
