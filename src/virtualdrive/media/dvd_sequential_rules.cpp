// SPDX-License-Identifier: GPL-2.0-or-later
#include "virtualdrive/media/dvd_sequential_rules.h"

#include <algorithm>

#include "virtualdrive/media/dvd_minus_rw_formats.h"
#include "virtualdrive/media/feature_codes.h"
#include "virtualdrive/media/track_writing.h"

namespace kelvane::virtualdrive {
namespace {

/// The border zone between two sessions of a DVD-R or DVD-RW takes 32 to 96 MB behind the first and
/// 6 to 18 MB behind further ones; it is the least here.
constexpr Lba kFirstBorderZone = 16384;
constexpr Lba kFurtherBorderZone = 3072;
/// The closure of a session of a DVD+R and the intro of the next take 4 MB together.
constexpr Lba kClosureAndIntro = 2048;

}  // namespace

std::uint16_t DvdSequentialRules::profile() const {
  switch (kind_) {
    case Kind::DvdR:
      return 0x0011;
    case Kind::DvdRw:
      return 0x0014;
    default:
      return 0x001B;
  }
}

std::vector<std::uint16_t> DvdSequentialRules::currentFeatures(const DiscState& disc) const {
  std::vector<std::uint16_t> features{kRandomReadable, kDvdRead};
  if (erasable()) features.push_back(kFormattable);
  if (kind_ == Kind::DvdPlusR) {
    features.push_back(kDvdPlusRSupport);
    return features;
  }
  if (disc.finalized) return features;
  features.push_back(kDvdMinusWrite);
  if (!disc.minimallyBlanked) features.push_back(kIncrementalStreamingWritable);
  return features;
}

std::vector<TrackView> DvdSequentialRules::tracks(const DiscState& disc) const {
  constexpr std::uint8_t kIncrementally = 0x20;
  constexpr std::uint8_t kPlusTrack = 0x80;
  auto views = viewsOfTracks(disc, nextTrackStart(disc));
  for (auto& view : views) {
    const auto* track = disc.trackNumbered(view.number);
    if (track == nullptr || !track->atOnce) view.stateBits = kIncrementally;
    if (kind_ == Kind::DvdPlusR && !view.invisible) view.stateBits |= kPlusTrack;
    view.reserved = view.reserved && !view.complete;
  }
  return views;
}

FormatCapacities DvdSequentialRules::formatCapacities(const DiscState& disc) const {
  auto capacities = MediumRules::formatCapacities(disc);
  if (erasable()) capacities.choices = dvdMinusRwFormats(disc);
  return capacities;
}

bool DvdSequentialRules::accepts(const WriteParameters& parameters) const {
  if (!followsWriteParameters()) return true;
  const bool simulated = (parameters.page[2] & 0x10) != 0;
  const auto type = parameters.type();
  return !simulated && parameters.dataBlockType() == 8 &&
         (type == WriteParameters::Type::Incremental ||
          type == WriteParameters::Type::SessionAtOnce);
}

bool DvdSequentialRules::writesAtOnce(const DiscFolder& folder) const {
  return followsWriteParameters() &&
         folder.drive.writeParameters.type() == WriteParameters::Type::SessionAtOnce;
}

Sense DvdSequentialRules::checkWayOfWriting(const DiscFolder& folder) const {
  const auto& disc = folder.disc;
  const bool begunAtOnce = !disc.tracks.empty() && disc.tracks.back().atOnce;
  const bool open = !disc.tracks.empty() && !disc.tracks.back().complete;
  if (open && begunAtOnce != writesAtOnce(folder)) return kIllegalModeForTrack;
  if (!writesAtOnce(folder)) return disc.minimallyBlanked ? kIllegalModeForTrack : kGood;
  return disc.blank() || open ? kGood : kIllegalModeForTrack;
}

Lba DvdSequentialRules::nextTrackStart(const DiscState& disc) const {
  if (disc.openSessionHasTracks()) return inWholeDvdBlocks(disc.tracks.back().end());
  if (disc.sessions.empty()) return 0;
  const auto leadOut = inWholeDvdBlocks(disc.sessions.back().leadOut);
  if (kind_ == Kind::DvdPlusR) return leadOut + kClosureAndIntro;
  return leadOut + (disc.sessions.size() == 1 ? kFirstBorderZone : kFurtherBorderZone);
}

Sense DvdSequentialRules::write(DiscFolder& folder, Lba first,
                                std::span<const std::uint8_t> data) const {
  if (folder.disc.finalized) return kInvalidAddressForWrite;
  if (const auto sense = checkWayOfWriting(folder); !sense.good()) return sense;
  const auto place = trackInTurnAt(folder.disc, first, nextTrackStart(folder.disc));
  if (place.track == nullptr) return kInvalidAddressForWrite;
  if (place.begun) place.track->atOnce = writesAtOnce(folder);
  return appendTo(place, folder, data);
}

/// Ends a recording at once, which needs no closing. A reserved one has to be full but for what the
/// last block is filled up with.
Sense DvdSequentialRules::endWriting(DiscFolder& folder) const {
  auto& tracks = folder.disc.tracks;
  if (tracks.empty() || !tracks.back().atOnce || tracks.back().complete) return kGood;
  auto& track = tracks.back();
  if (inWholeDvdBlocks(track.recorded) < track.reserved) return kGood;
  if (const auto sense = complete(folder, track); !sense.good()) return sense;
  return close(folder, futureBySettings(folder));
}

Sense DvdSequentialRules::reserveTrack(DiscFolder& folder, Lba sectors) const {
  auto& disc = folder.disc;
  if (disc.finalized) return kIncompatibleMedium;
  if (!disc.tracks.empty() && disc.tracks.back().growsWithFile()) return kCommandSequence;
  if (const auto sense = checkWayOfWriting(folder); !sense.good()) return sense;
  if (disc.tracks.size() >= kMostTracks) return kNoMoreTracks;
  Track track;
  track.number = static_cast<int>(disc.tracks.size()) + 1;
  track.session = disc.openSession();
  track.start = nextTrackStart(disc);
  track.atOnce = writesAtOnce(folder);
  if (sectors > disc.capacity - track.start) return kEndOfUserArea;
  track.reserved = std::min(inWholeDvdBlocks(sectors), disc.capacity - track.start);
  disc.tracks.push_back(track);
  return folder.storeDisc() ? kGood : kWriteError;
}

Sense DvdSequentialRules::complete(DiscFolder& folder, Track& track) const {
  const auto room = folder.disc.capacity - track.start;
  const auto wanted = std::min(inWholeDvdBlocks(track.recorded), room);
  return completeWith(track.reserved > 0 ? track.reserved : wanted, folder, track);
}

Sense DvdSequentialRules::closeTrack(DiscFolder& folder, int number) const {
  return closeNumberedTrack(folder, number, [&](Track& track) { return complete(folder, track); });
}

DvdSequentialRules::Future DvdSequentialRules::futureBySettings(const DiscFolder& folder) const {
  const bool appendable = !followsWriteParameters() || folder.drive.writeParameters.multiSession();
  return appendable ? Future::Appendable : Future::Closed;
}

Sense DvdSequentialRules::close(DiscFolder& folder, Future future) const {
  auto& disc = folder.disc;
  if (!disc.openSessionHasTracks()) return kGood;
  if (const auto sense = checkTracksComplete(disc); !sense.good()) return sense;
  addClosedSession(disc, disc.tracks.back().end());
  disc.minimallyBlanked = false;
  // A disc without room for a further session is closed for good.
  const bool room =
      nextTrackStart(disc) + kDvdBlockSectors <= disc.capacity && disc.tracks.size() < kMostTracks;
  disc.finalized = future == Future::Closed || !room;
  return folder.storeDisc() ? kGood : kWriteError;
}

Sense DvdSequentialRules::closeSession(DiscFolder& folder) const {
  return close(folder, futureBySettings(folder));
}

Sense DvdSequentialRules::finalize(DiscFolder& folder) const {
  auto& disc = folder.disc;
  if (kind_ != Kind::DvdPlusR) return kInvalidFieldInCommand;
  if (disc.openSessionHasTracks()) return close(folder, Future::Closed);
  if (disc.sessions.empty()) return kGood;
  disc.finalized = true;
  return folder.storeDisc() ? kGood : kWriteError;
}

Sense DvdSequentialRules::blank(DiscFolder& folder, BlankExtent extent) const {
  if (!erasable()) return kIncompatibleMedium;
  return blankDvdMinusRw(folder, extent);
}

Sense DvdSequentialRules::format(DiscFolder& folder, const FormatRequest& request) const {
  if (!erasable()) return kIncompatibleMedium;
  return formatDvdMinusRw(folder, request);
}

}  // namespace kelvane::virtualdrive
