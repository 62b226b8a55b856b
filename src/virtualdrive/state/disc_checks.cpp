// SPDX-License-Identifier: GPL-2.0-or-later
#include "virtualdrive/state/disc_checks.h"

#include <algorithm>

namespace kelvane::virtualdrive {
namespace {

std::string named(const char* what, int number) {
  return what + (" " + std::to_string(number));
}

std::string contradictionInTracks(const DiscState& disc) {
  Lba free = 0;
  int session = 1;
  for (const auto& track : disc.tracks) {
    const auto name = named("track", track.number);
    if (track.start < free) return name + " begins before the one before it ends";
    if (track.session < session || track.session > disc.openSession()) {
      return name + " belongs to no session that can be";
    }
    if (track.end() > disc.capacity) return name + " reaches beyond the disc";
    if (track.reserved > 0 && track.recorded > track.reserved) return name + " is overfull";
    if (track.complete && track.recorded == 0) return name + " is complete but empty";
    if (!track.growsWithFile() && track.start + track.recorded > disc.reachOf(track.form) &&
        track.recorded > 0) {
      return name + " is longer than the file of sectors";
    }
    if (track.growsWithFile() && &track != &disc.tracks.back()) {
      return name + " is open but not the last";
    }
    session = track.session;
    free = track.end();
  }
  return {};
}

std::string contradictionInSessions(const DiscState& disc) {
  int nextTrack = 1;
  for (const auto& session : disc.sessions) {
    const auto name = named("session", session.number);
    const auto* last = disc.trackNumbered(session.lastTrack);
    if (session.firstTrack != nextTrack || session.lastTrack < session.firstTrack ||
        last == nullptr) {
      return name + " has no tracks that can be";
    }
    for (int number = session.firstTrack; number <= session.lastTrack; ++number) {
      const auto& track = disc.track(number);
      if (track.session != session.number || !track.complete) {
        return name + " is closed but its " + named("track", number) + " is not";
      }
    }
    if (session.leadOut < last->end()) return name + " ends before its last track does";
    const auto* following = disc.trackNumbered(session.lastTrack + 1);
    if (following != nullptr && following->start < session.leadOut) {
      return name + " ends after the next one has begun";
    }
    nextTrack = session.lastTrack + 1;
  }
  for (const auto& track : disc.tracks) {
    if (track.number >= nextTrack && track.session != disc.openSession()) {
      return named("track", track.number) + " belongs to a session that is not there";
    }
  }
  if (disc.finalized && (disc.sessions.empty() || disc.openSessionHasTracks())) {
    return "the disc is closed for good, but its last session is not";
  }
  return {};
}

std::string contradictionInFormatting(const DiscState& disc) {
  if (!disc.formatting) return {};
  if (disc.medium != MediumKind::DvdRw && disc.medium != MediumKind::DvdPlusRw) {
    return "a " + std::string(nameOf(disc.medium)) + " cannot be formatted";
  }
  if (!disc.tracks.empty() || !disc.sessions.empty() || disc.cueSheet || disc.finalized) {
    return "a formatted disc has no tracks and sessions";
  }
  if (disc.formatting->sectors > disc.capacity) return "more is formatted than there is";
  return {};
}

/// An unformatted DVD+RW takes no data.
std::string contradictionInMedium(const DiscState& disc) {
  if (disc.medium == MediumKind::DvdPlusRw && !disc.tracks.empty()) {
    return "a dvd+rw has no tracks";
  }
  if (disc.cueSheet && !isCd(disc.medium)) return "there is a cue sheet on a DVD";
  const bool audio = std::ranges::count(disc.tracks, TrackForm::Audio, &Track::form) > 0;
  if (audio && !isCd(disc.medium)) return "there is audio on a DVD";
  return {};
}

std::string contradictionInCueSheet(const DiscState& disc) {
  if (!disc.cueSheet) return {};
  const auto& sheet = *disc.cueSheet;
  if (!disc.tracks.empty()) return "there is a cue sheet on a disc with tracks";
  Lba free = 0;
  for (const auto& track : sheet.tracks) {
    if (track.start < free) return "the tracks of the cue sheet overlap";
    free = track.start + track.sectors;
  }
  if (sheet.tracks.empty() || sheet.leadOut != free) return "the cue sheet has no proper end";
  if (sheet.leadOut > disc.capacity + 2) return "the cue sheet reaches beyond the disc";
  if (disc.reach() > sheet.leadOut) return "the file of sectors is longer than the cue sheet";
  return {};
}

/// How far the tracks go whose sectors stand in the same file as those of that form.
Lba describedReach(const DiscState& disc, TrackForm form) {
  Lba reach = 0;
  for (const auto& track : disc.tracks) {
    const bool sameFile = (track.form == TrackForm::Audio) == (form == TrackForm::Audio);
    if (sameFile) reach = std::max(reach, track.end());
  }
  return reach;
}

}  // namespace

std::string takeFileLengths(DiscState* disc, const FileLengths& files) {
  const auto most = static_cast<std::uint64_t>(disc->capacity) + 2;
  const auto sectors = files.sectors / kSectorBytes;
  const auto audio = files.audio / kAudioSectorBytes;
  if (sectors > most || audio > most) return "the file of sectors is longer than the disc";
  disc->fileSectors = static_cast<Lba>(sectors);
  disc->audioSectors = static_cast<Lba>(audio);
  if (disc->formatting) {
    auto& formatting = *disc->formatting;
    const auto reached = std::min(inWholeDvdBlocks(disc->fileSectors), disc->capacity);
    if (formatting.growing) formatting.sectors = std::max(formatting.sectors, reached);
    return disc->fileSectors <= formatting.sectors
               ? std::string()
               : "the file of sectors is longer than the formatted area";
  }
  if (!disc->tracks.empty() && disc->tracks.back().growsWithFile()) {
    auto& track = disc->tracks.back();
    track.recorded = std::max(0, disc->reachOf(track.form) - track.start);
  }
  if (disc->cueSheet) return {};
  for (const auto form : {TrackForm::Mode1, TrackForm::Audio}) {
    if (disc->reachOf(form) > describedReach(*disc, form)) {
      return "the file of sectors is longer than the tracks";
    }
  }
  return {};
}

std::string contradictionIn(const DiscState& disc) {
  if (auto wrong = contradictionInTracks(disc); !wrong.empty()) return wrong;
  if (auto wrong = contradictionInSessions(disc); !wrong.empty()) return wrong;
  if (auto wrong = contradictionInFormatting(disc); !wrong.empty()) return wrong;
  if (auto wrong = contradictionInMedium(disc); !wrong.empty()) return wrong;
  return contradictionInCueSheet(disc);
}

}  // namespace kelvane::virtualdrive
