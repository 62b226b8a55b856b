// SPDX-License-Identifier: GPL-2.0-or-later
#include "virtualdrive/media/medium_rules.h"

#include <algorithm>

#include "virtualdrive/media/cd_rules.h"
#include "virtualdrive/media/dvd_plus_rw_rules.h"
#include "virtualdrive/media/dvd_restricted_overwrite_rules.h"
#include "virtualdrive/media/dvd_sequential_rules.h"

namespace kelvane::virtualdrive {

const MediumRules& MediumRules::of(const DiscState& disc) {
  static const CdRules cdR(CdRules::Kind::WriteOnce);
  static const CdRules cdRw(CdRules::Kind::Rewritable);
  static const DvdSequentialRules dvdR(DvdSequentialRules::Kind::DvdR);
  static const DvdSequentialRules dvdRw(DvdSequentialRules::Kind::DvdRw);
  static const DvdSequentialRules dvdPlusR(DvdSequentialRules::Kind::DvdPlusR);
  static const DvdRestrictedOverwriteRules restrictedOverwrite;
  static const DvdPlusRwRules dvdPlusRw;
  switch (disc.medium) {
    case MediumKind::CdRw:
      return cdRw;
    case MediumKind::DvdR:
      return dvdR;
    case MediumKind::DvdRw:
      if (disc.formatting) return restrictedOverwrite;
      return dvdRw;
    case MediumKind::DvdPlusRw:
      return dvdPlusRw;
    case MediumKind::DvdPlusR:
      return dvdPlusR;
    default:
      return cdR;
  }
}

std::vector<SessionView> MediumRules::sessions(const DiscState& disc) const {
  std::vector<SessionView> views;
  for (const auto& session : disc.sessions) {
    const auto start = disc.track(session.firstTrack).start;
    views.push_back(
        {session.number, session.firstTrack, session.lastTrack, start, session.leadOut});
  }
  return views;
}

DiscSummary MediumRules::summary(const DiscState& disc) const {
  const auto closed = static_cast<int>(disc.sessions.size());
  DiscSummary summary;
  if (disc.finalized) {
    const auto& last = disc.sessions.back();
    return {DiscStatus::Complete, SessionState::Complete, BackgroundFormat::None, closed,
            last.firstTrack,      last.lastTrack};
  }
  if (!disc.blank()) summary.status = DiscStatus::Appendable;
  if (disc.openSessionHasTracks() || disc.cueSheetBegun()) {
    summary.lastSession = SessionState::Incomplete;
  }
  const auto all = tracks(disc);
  const int first = disc.sessions.empty() ? 1 : disc.sessions.back().lastTrack + 1;
  summary.sessions = closed + 1;
  summary.firstTrackOfLastSession = first;
  summary.lastTrackOfLastSession = all.empty() ? first : std::max(first, all.back().number);
  return summary;
}

FormatCapacities MediumRules::formatCapacities(const DiscState& disc) const {
  const bool open = disc.blank() || disc.sessions.empty();
  return {!disc.blank(), open ? disc.capacity : disc.sessions.back().leadOut, {}};
}

Sense MediumRules::checkReadable(const DiscState& disc, Lba first, Lba count) const {
  auto limit = disc.sessions.empty() ? 0 : disc.sessions.back().leadOut;
  for (const auto& track : disc.tracks) limit = std::max(limit, track.start + track.recorded);
  if (first < 0 || count > limit - first) return kAddressOutOfRange;
  auto at = first;
  for (const auto& track : disc.tracks) {
    const auto end = track.start + track.recorded;
    if (at >= track.start && at < end) at = std::min(end, first + count);
  }
  return at == first + count ? kGood : kUnrecoveredRead;
}

std::size_t MediumRules::blockBytes(const DiscFolder&, Lba) const {
  return kSectorBytes;
}

Sense MediumRules::endWriting(DiscFolder&) const {
  return kGood;
}

Sense MediumRules::reserveTrack(DiscFolder&, Lba) const {
  return kIncompatibleMedium;
}

Sense MediumRules::takeCueSheet(DiscFolder&, std::span<const std::uint8_t>) const {
  return kIncompatibleMedium;
}

Sense MediumRules::closeTrack(DiscFolder&, int) const {
  return kInvalidFieldInCommand;
}

Sense MediumRules::closeSession(DiscFolder&) const {
  return kInvalidFieldInCommand;
}

Sense MediumRules::finalize(DiscFolder&) const {
  return kInvalidFieldInCommand;
}

Sense MediumRules::stopFormatting(DiscFolder&) const {
  return kInvalidFieldInCommand;
}

Sense MediumRules::blank(DiscFolder&, BlankExtent) const {
  return kIncompatibleMedium;
}

Sense MediumRules::format(DiscFolder&, const FormatRequest&) const {
  return kIncompatibleMedium;
}

Lba readableEnd(const DiscState& disc) {
  const auto sessions = MediumRules::of(disc).sessions(disc);
  return sessions.empty() ? 0 : sessions.back().leadOut;
}

}  // namespace kelvane::virtualdrive
