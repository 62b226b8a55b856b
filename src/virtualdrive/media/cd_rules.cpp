// SPDX-License-Identifier: GPL-2.0-or-later
#include "virtualdrive/media/cd_rules.h"

#include <algorithm>

#include "virtualdrive/media/cd_layout.h"
#include "virtualdrive/media/cd_session_at_once.h"
#include "virtualdrive/media/cd_track_at_once.h"

namespace kelvane::virtualdrive {
namespace {

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

std::vector<TrackView> viewsOfCueSheet(const DiscState& disc) {
  std::vector<TrackView> views;
  const auto next = nextAddressOfCueSheet(disc);
  for (const auto& track : disc.cueSheet->tracks) {
    TrackView view;
    view.number = static_cast<int>(views.size()) + 1;
    view.start = track.start;
    view.size = track.sectors;
    view.recorded = std::clamp(disc.fileSectors - track.start, 0, track.sectors);
    view.free = track.sectors - view.recorded;
    view.complete = view.free == 0;
    view.form = track.form;
    const bool first = views.empty();
    if (next < track.start + track.sectors && (first || next >= track.start)) {
      view.nextWritable = next;
    }
    views.push_back(view);
  }
  return views;
}

TrackView invisibleTrack(const DiscState& disc) {
  TrackView view;
  view.number = static_cast<int>(disc.tracks.size()) + 1;
  view.session = disc.openSession();
  view.start = cdNextTrackStart(disc);
  view.size = std::max(0, disc.capacity - view.start);
  view.free = view.size;
  view.invisible = true;
  if (view.free > 0) view.nextWritable = view.start;
  return view;
}

}  // namespace

const MediumRules& MediumRules::of(MediumKind kind) {
  static const CdRules writeOnce(CdRules::Kind::WriteOnce);
  static const CdRules rewritable(CdRules::Kind::Rewritable);
  return kind == MediumKind::CdRw ? rewritable : writeOnce;
}

std::vector<TrackView> CdRules::tracks(const DiscState& disc) const {
  if (disc.cueSheetBegun()) return viewsOfCueSheet(disc);
  std::vector<TrackView> views;
  for (const auto& track : disc.tracks) views.push_back(viewOf(track, disc));
  const bool growing = !disc.tracks.empty() && disc.tracks.back().growsWithFile();
  if (!disc.finalized && !growing && disc.tracks.size() < kCdMostTracks) {
    views.push_back(invisibleTrack(disc));
  }
  return views;
}

bool CdRules::accepts(const WriteParameters& parameters) const {
  const bool simulated = (parameters.page[2] & 0x10) != 0;
  if (simulated) return false;
  // Of a session at once the cue sheet tells what the tracks are made of.
  if (parameters.type() == WriteParameters::Type::SessionAtOnce) return true;
  const bool dataTrack = (parameters.page[3] & 0x0D) == 0x04;
  return parameters.type() == WriteParameters::Type::TrackAtOnce && dataTrack &&
         trackFormOf(parameters).has_value();
}

Sense CdRules::write(DiscFolder& folder, Lba first, std::span<const std::uint8_t> data) const {
  if (folder.disc.finalized) return kInvalidAddressForWrite;
  const auto type = folder.drive.writeParameters.type();
  if (type == WriteParameters::Type::SessionAtOnce) return writeCueSheetData(folder, first, data);
  if (folder.disc.cueSheetBegun()) return kIllegalModeForTrack;
  folder.disc.cueSheet.reset();
  return writeTrackAtOnce(folder, first, data);
}

Sense CdRules::endWriting(DiscFolder& folder) const {
  if (folder.disc.cueSheetBegun()) return endCueSheet(folder);
  if (folder.disc.tracks.empty() || !folder.disc.tracks.back().growsWithFile()) return kGood;
  return completeTrack(folder, folder.disc.tracks.back());
}

Sense CdRules::reserveTrack(DiscFolder& folder, Lba sectors) const {
  if (folder.disc.finalized) return kIncompatibleMedium;
  if (folder.disc.cueSheetBegun()) return kIllegalModeForTrack;
  folder.disc.cueSheet.reset();
  return reserveCdTrack(folder, sectors);
}

Sense CdRules::takeCueSheet(DiscFolder& folder, std::span<const std::uint8_t> sheet) const {
  if (!folder.disc.blank()) return kCommandSequence;
  if (folder.drive.writeParameters.type() != WriteParameters::Type::SessionAtOnce) {
    return kCommandSequence;
  }
  return storeCueSheet(folder, sheet);
}

Sense CdRules::closeTrack(DiscFolder& folder, int number) const {
  auto& tracks = folder.disc.tracks;
  if (folder.disc.cueSheetBegun()) return kIllegalModeForTrack;
  if (number == 0xFF) {
    if (tracks.empty() || tracks.back().complete) return kGood;
    return completeTrack(folder, tracks.back());
  }
  const auto invisible = static_cast<int>(tracks.size()) + 1;
  if (number < 1 || number > invisible) return kInvalidFieldInCommand;
  if (number == invisible) return kGood;
  auto& track = tracks[static_cast<std::size_t>(number - 1)];
  return track.complete ? kGood : completeTrack(folder, track);
}

Sense CdRules::closeSession(DiscFolder& folder) const {
  auto& disc = folder.disc;
  if (disc.cueSheetBegun()) return endCueSheet(folder);
  if (!disc.openSessionHasTracks()) return kGood;
  for (const auto& track : disc.tracks) {
    if (!track.complete)
      return track.reserved > 0 ? kReservedTrackNotFull : kIncompleteTrackInSession;
  }
  Session session;
  session.number = disc.openSession();
  session.firstTrack = disc.sessions.empty() ? 1 : disc.sessions.back().lastTrack + 1;
  session.lastTrack = disc.tracks.back().number;
  session.leadOut = disc.tracks.back().end() + kCdRunOut;
  disc.sessions.push_back(session);
  // A disc without room for a further session is closed for good: no pointer could lead to one.
  const bool room = cdNextTrackStart(disc) + kShortestCdTrack <= disc.capacity &&
                    disc.tracks.size() < kCdMostTracks;
  disc.finalized = !folder.drive.writeParameters.multiSession() || !room;
  return folder.storeDisc() ? kGood : kWriteError;
}

Sense CdRules::blank(DiscFolder& folder, BlankExtent) const {
  if (!erasable()) return kIncompatibleMedium;
  return folder.removeEverything() ? kGood : kWriteError;
}

}  // namespace kelvane::virtualdrive
