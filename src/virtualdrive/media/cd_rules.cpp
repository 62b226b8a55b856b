// SPDX-License-Identifier: GPL-2.0-or-later
#include "virtualdrive/media/cd_rules.h"

#include <algorithm>

#include "virtualdrive/media/cd_layout.h"
#include "virtualdrive/media/cd_session_at_once.h"
#include "virtualdrive/media/cd_track_at_once.h"
#include "virtualdrive/media/feature_codes.h"
#include "virtualdrive/media/track_writing.h"

namespace kelvane::virtualdrive {
namespace {

std::vector<TrackView> viewsOfCueSheet(const DiscState& disc) {
  std::vector<TrackView> views;
  const auto next = nextAddressOfCueSheet(disc);
  for (const auto& track : disc.cueSheet->tracks) {
    TrackView view;
    view.number = static_cast<int>(views.size()) + 1;
    view.start = track.start;
    view.size = track.sectors;
    view.recorded = std::clamp(disc.reach() - track.start, 0, track.sectors);
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

}  // namespace

std::vector<std::uint16_t> CdRules::currentFeatures(const DiscState& disc) const {
  std::vector<std::uint16_t> features{kRandomReadable, kCdRead};
  if (!disc.finalized) features.insert(features.end(), {kCdTrackAtOnce, kCdMastering});
  if (erasable()) features.push_back(kCdRwMediaWrite);
  return features;
}

std::vector<TrackView> CdRules::tracks(const DiscState& disc) const {
  if (disc.cueSheetBegun()) return viewsOfCueSheet(disc);
  return viewsOfTracks(disc, cdNextTrackStart(disc));
}

bool CdRules::accepts(const WriteParameters& parameters) const {
  const bool simulated = (parameters.page[2] & 0x10) != 0;
  if (simulated) return false;
  // Of a session at once the cue sheet tells what the tracks are made of.
  if (parameters.type() == WriteParameters::Type::SessionAtOnce) return true;
  const auto form = trackFormOf(parameters);
  // Data written without interruption, or two channels with no pre-emphasis.
  const bool knownMode = (parameters.page[3] & 0x0D) == (parameters.dataTrack() ? 0x04 : 0x00);
  return parameters.type() == WriteParameters::Type::TrackAtOnce && knownMode && form &&
         (*form == TrackForm::Audio) != parameters.dataTrack();
}

std::size_t CdRules::blockBytes(const DiscFolder& folder, Lba first) const {
  const auto& parameters = folder.drive.writeParameters;
  if (parameters.type() == WriteParameters::Type::SessionAtOnce) {
    return blockBytesOfCueSheet(folder.disc, first);
  }
  return sectorBytesOf(trackFormOf(parameters).value_or(TrackForm::Mode1));
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
  if (folder.disc.cueSheetBegun()) return kIllegalModeForTrack;
  return closeNumberedTrack(folder, number,
                            [&](Track& track) { return completeTrack(folder, track); });
}

Sense CdRules::closeSession(DiscFolder& folder) const {
  auto& disc = folder.disc;
  if (disc.cueSheetBegun()) return endCueSheet(folder);
  if (!disc.openSessionHasTracks()) return kGood;
  if (const auto sense = checkTracksComplete(disc); !sense.good()) return sense;
  addClosedSession(disc, disc.tracks.back().end() + kCdRunOut);
  // A disc without room for a further session is closed for good: no pointer could lead to one.
  const bool room = cdNextTrackStart(disc) + kShortestCdTrack <= disc.capacity &&
                    disc.tracks.size() < kMostTracks;
  disc.finalized = !folder.drive.writeParameters.multiSession() || !room;
  return folder.storeDisc() ? kGood : kWriteError;
}

Sense CdRules::blank(DiscFolder& folder, BlankExtent) const {
  if (!erasable()) return kIncompatibleMedium;
  return folder.removeEverything(folder.disc.asBlank()) ? kGood : kWriteError;
}

}  // namespace kelvane::virtualdrive
