// SPDX-License-Identifier: GPL-2.0-or-later
#include "virtualdrive/media/track_writing.h"

#include <algorithm>

namespace kelvane::virtualdrive {
namespace {

/// The view of a track that is on the disc.
TrackView viewOf(const Track& track, const DiscState& disc) {
  TrackView view;
  view.number = track.number;
  view.session = track.session;
  view.start = track.start;
  view.size = track.size();
  view.recorded = track.recorded;
  view.reserved = track.reserved > 0;
  view.complete = track.complete;
  view.form = track.form;
  if (track.complete) return view;
  const auto limit = track.reserved > 0 ? track.end() : disc.capacity;
  view.size = limit - track.start;
  view.free = limit - track.start - track.recorded;
  if (view.free > 0) view.nextWritable = track.start + track.recorded;
  return view;
}

TrackView invisibleTrack(const DiscState& disc, Lba start) {
  TrackView view;
  view.number = static_cast<int>(disc.tracks.size()) + 1;
  view.session = disc.openSession();
  view.start = start;
  view.size = std::max(0, disc.capacity - start);
  view.free = view.size;
  view.invisible = true;
  if (view.free > 0) view.nextWritable = start;
  return view;
}

}  // namespace

std::vector<TrackView> viewsOfTracks(const DiscState& disc, Lba newTrackStart) {
  std::vector<TrackView> views;
  for (const auto& track : disc.tracks) views.push_back(viewOf(track, disc));
  const bool growing = !disc.tracks.empty() && disc.tracks.back().growsWithFile();
  if (!disc.finalized && !growing && disc.tracks.size() < kMostTracks) {
    views.push_back(invisibleTrack(disc, newTrackStart));
  }
  return views;
}

TrackInTurn trackInTurnAt(DiscState& disc, Lba first, std::optional<Lba> newTrackStart) {
  for (auto& track : disc.tracks) {
    if (!track.complete && first == track.start + track.recorded) return {&track, false};
  }
  const bool growing = !disc.tracks.empty() && disc.tracks.back().growsWithFile();
  if (growing || disc.tracks.size() >= kMostTracks || first != newTrackStart) return {};
  Track track;
  track.number = static_cast<int>(disc.tracks.size()) + 1;
  track.session = disc.openSession();
  track.start = first;
  disc.tracks.push_back(track);
  return {&disc.tracks.back(), true};
}

Sense appendTo(const TrackInTurn& place, DiscFolder& folder, std::span<const std::uint8_t> data) {
  auto& disc = folder.disc;
  auto& track = *place.track;
  const auto first = track.start + track.recorded;
  const auto count = static_cast<Lba>(data.size() / sectorBytesOf(track.form));
  const auto limit = track.reserved > 0 ? track.end() : disc.capacity;
  if (count > limit - first) return kEndOfUserArea;
  // The description of a new track precedes its data; the data of a reserved track precedes the new
  // count.
  if (place.begun && !folder.storeDisc()) return kWriteError;
  auto* file = folder.fileOf(track.form);
  if (file == nullptr || !file->write(first, data)) return kWriteError;
  track.recorded += count;
  disc.reachOf(track.form) = std::max(disc.reachOf(track.form), first + count);
  if (track.reserved > 0 && !folder.storeDisc()) return kWriteError;
  return kGood;
}

Sense completeWith(Lba sectors, DiscFolder& folder, Track& track) {
  auto& disc = folder.disc;
  const auto end = track.start + sectors;
  if (end > disc.reachOf(track.form)) {
    const auto* file = folder.fileOf(track.form);
    if (file == nullptr || !file->resize(end)) return kWriteError;
    disc.reachOf(track.form) = end;
  }
  track.recorded = sectors;
  track.complete = true;
  return folder.storeDisc() ? kGood : kWriteError;
}

Sense checkTracksComplete(const DiscState& disc) {
  for (const auto& track : disc.tracks) {
    if (track.complete) continue;
    return track.reserved > 0 ? kReservedTrackNotFull : kIncompleteTrackInSession;
  }
  return kGood;
}

void addClosedSession(DiscState& disc, Lba leadOut) {
  Session session;
  session.number = disc.openSession();
  session.firstTrack = disc.sessions.empty() ? 1 : disc.sessions.back().lastTrack + 1;
  session.lastTrack = disc.tracks.back().number;
  session.leadOut = leadOut;
  disc.sessions.push_back(session);
}

}  // namespace kelvane::virtualdrive
