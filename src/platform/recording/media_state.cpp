// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/recording/media_state.h"

#include <algorithm>
#include <cstdint>
#include <string_view>

#include "platform/recording/dr_media_types.h"
#include "platform/recording/mmc/disc_information.h"
#include "platform/recording/mmc/read_sector.h"
#include "platform/recording/mmc/track_information.h"
#include "platform/recording/mmc/unit_ready.h"
#include "platform/recording/overwritten_disc.h"

namespace kelvane {
namespace {

// A CD has at most 99 tracks, a DVD-R 2302 (MMC-5, 4.3.6.2). A drive that claims more is not
// believed.
constexpr uint16_t kMostTracks = 2302;

std::optional<int64_t> nextWritableAddress(mmc::Transport& transport, uint16_t openTrack) {
  const auto track = mmc::readTrackInformation(transport, openTrack);
  if (!track) return std::nullopt;
  return track->nextWritableAddress;
}

// A track as the device status shows it. The open track starts where the drive would write next,
// which differs from its beginning where a recording was cut off.
DRTrackInfo trackInfo(const mmc::TrackInformation& track, bool isOpenTrack) {
  DRTrackInfo info;
  info.DRTrackSessionNumberKey = track.session;
  if (isOpenTrack) {
    info.DRTrackStartAddressKey = track.nextWritableAddress;
    return info;
  }
  info.DRTrackStartAddressKey = track.start;
  info.DRTrackLengthKey = track.size;
  return info;
}

// Whether a volume begins at that track (ECMA-119, 6.2.1 and 8.1.2).
bool holdsVolume(mmc::Transport& transport, const DRTrackInfo& track) {
  constexpr int64_t kSystemArea = 16;
  constexpr std::string_view kIdentifier = "CD001";
  if (!track.DRTrackStartAddressKey) return false;
  const int64_t address = *track.DRTrackStartAddressKey + kSystemArea;
  if (address > INT32_MAX) return false;
  const auto sector = mmc::readSector(transport, static_cast<int32_t>(address));
  return sector && std::equal(kIdentifier.begin(), kIdentifier.end(), sector->begin() + 1);
}

// A recording that broke off at its beginning leaves a session behind in which nobody finds
// anything. Where an earlier session holds a volume, that is the one to be shown and to be gone on
// from, and the tracks after it are left out.
void leaveOutBrokenSessions(mmc::Transport& transport, size_t closedTracks,
                            DRDeviceMediaInfo& media) {
  constexpr size_t kMostBroken = 8;
  auto& tracks = media.DRDeviceTrackRefsKey;
  const size_t least = closedTracks - std::min(closedTracks, kMostBroken);
  for (size_t count = closedTracks; count > least; --count) {
    const auto info = media.DRDeviceTrackInfoKey.find(tracks[count - 1]);
    if (info == media.DRDeviceTrackInfoKey.end() || !holdsVolume(transport, info->second)) continue;
    if (count == closedTracks) return;
    const auto broken = tracks.begin() + static_cast<std::ptrdiff_t>(count);
    const auto end = tracks.begin() + static_cast<std::ptrdiff_t>(closedTracks);
    for (auto track = broken; track != end; ++track) media.DRDeviceTrackInfoKey.erase(*track);
    tracks.erase(broken, end);
    media.DRDeviceMediaSessionCountKey = info->second.DRTrackSessionNumberKey;
    return;
  }
}

// Media of which any block can be written again once they are formatted. Formatted they are not
// blank to the drive, whether or not something stands on them.
bool isOverwritten(mmc::Profile profile) {
  return profile == mmc::Profile::DvdPlusRw || profile == mmc::Profile::DvdRwRestrictedOverwrite;
}

// A DVD-RW in restricted overwrite whose writing was broken off has one session, which still grows
// and never was another one: what is on the disc is in it. (MMC-5, 6.22.3.1.3)
bool growsInPlace(mmc::Transport& transport, const mmc::DiscInformation& disc) {
  if (!disc.isOpen() || disc.lastSession != mmc::LastSessionState::Incomplete) return false;
  const auto configuration = mmc::readConfiguration(transport);
  return configuration && isOverwritten(configuration->currentProfile);
}

}  // namespace

MediaState readMediaState(mmc::Transport& transport) {
  MediaState state;
  const mmc::Readiness readiness = mmc::testUnitReady(transport);
  state.transitioning = readiness == mmc::Readiness::BecomingReady;
  if (readiness != mmc::Readiness::Ready && readiness != mmc::Readiness::Unusable) return state;
  if (const auto configuration = mmc::readConfiguration(transport)) {
    state.profile = configuration->currentProfile;
  }
  state.present = readiness == mmc::Readiness::Ready || state.profile != mmc::Profile::None;
  const auto disc = mmc::readDiscInformation(transport);
  if (!disc) return state;
  state.blank = disc->status == mmc::DiscStatus::Blank ||
                (isOverwritten(state.profile) && overwrittenDiscIsEmpty(transport));
  state.appendable = disc->canTakeSession();
  state.sessions = disc->sessions;
  state.lastTrack = disc->lastTrackInLastSession;
  if (disc->isOpen()) {
    state.nextWritableAddress = nextWritableAddress(transport, disc->lastTrackInLastSession);
  }
  return state;
}

DRDeviceStatus readDeviceStatus(mmc::Transport& transport) {
  DRDeviceStatus status;
  const auto disc = mmc::readDiscInformation(transport);
  if (!disc) return status;
  DRDeviceMediaInfo& media = status.DRDeviceMediaInfoKey.emplace();
  const bool isOpen = disc->isOpen() && !growsInPlace(transport, *disc);
  media.DRDeviceMediaSessionCountKey = isOpen ? disc->completeSessions() : disc->sessions;
  const uint16_t first = std::max<uint16_t>(disc->firstTrack, 1);
  const uint16_t last = std::min(disc->lastTrackInLastSession, kMostTracks);
  for (uint16_t number = first; number <= last; ++number) {
    media.DRDeviceTrackRefsKey.push_back(number);
    const auto track = mmc::readTrackInformation(transport, number);
    if (!track) continue;
    const bool isOpenTrack = isOpen && number == last;
    media.DRDeviceTrackInfoKey[number] = trackInfo(*track, isOpenTrack);
    if (isOpenTrack) media.DRDeviceMediaBlocksFreeKey = track->freeBlocks;
  }
  const size_t openTracks = isOpen ? 1 : 0;
  const size_t closedTracks =
      media.DRDeviceTrackRefsKey.size() - std::min(openTracks, media.DRDeviceTrackRefsKey.size());
  if (closedTracks > 1) leaveOutBrokenSessions(transport, closedTracks, media);
  return status;
}

std::optional<std::string> mediaTypeOf(mmc::Profile profile) {
  using mmc::Profile;
  switch (profile) {
    case Profile::CdRom:
      return DRDeviceMediaTypeCDROM;
    case Profile::CdR:
      return DRDeviceMediaTypeCDR;
    case Profile::CdRw:
      return DRDeviceMediaTypeCDRW;
    case Profile::DvdRom:
      return DRDeviceMediaTypeDVDROM;
    case Profile::DvdR:
      return DRDeviceMediaTypeDVDR;
    case Profile::DvdRam:
      return DRDeviceMediaTypeDVDRAM;
    case Profile::DvdRwRestrictedOverwrite:
    case Profile::DvdRwSequential:
      return DRDeviceMediaTypeDVDRW;
    case Profile::DvdRDualLayerSequential:
    case Profile::DvdRDualLayerJump:
      return DRDeviceMediaTypeDVDRDualLayer;
    case Profile::DvdPlusRw:
      return DRDeviceMediaTypeDVDPlusRW;
    case Profile::DvdPlusR:
      return DRDeviceMediaTypeDVDPlusR;
    case Profile::DvdPlusRDoubleLayer:
      return DRDeviceMediaTypeDVDPlusRDoubleLayer;
    case Profile::BdRom:
      return DRDeviceMediaTypeBDROM;
    case Profile::BdRSequential:
    case Profile::BdRRandom:
      return DRDeviceMediaTypeBDR;
    case Profile::BdRe:
      return DRDeviceMediaTypeBDRE;
    case Profile::None:
      break;
  }
  return std::nullopt;
}

}  // namespace kelvane
