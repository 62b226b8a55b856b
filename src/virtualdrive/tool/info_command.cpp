// SPDX-License-Identifier: GPL-2.0-or-later
#include <cstdio>
#include <nlohmann/json.hpp>

#include "virtualdrive/media/medium_rules.h"
#include "virtualdrive/tool/commands.h"

namespace kelvane::virtualdrive::tool {
namespace {

using nlohmann::json;

/// A session with its tracks, closed or still open.
struct SessionInfo {
  int number;
  /// Where its lead-out begins; empty where it is open.
  std::optional<Lba> leadOut;
  std::vector<TrackView> tracks;
};

/// What info tells.
struct DiscInfo {
  DiscState disc;
  bool loaded;
  const char* state;
  std::vector<SessionInfo> sessions;
  /// Where a program would write next; empty where nothing can be appended.
  std::optional<TrackView> writable;

  /// Sectors that can still be written; all of a disc that can be overwritten.
  Lba free() const {
    if (disc.formatting) return disc.capacity;
    return writable ? writable->free : 0;
  }
};

const char* stateOf(const DiscState& disc) {
  if (disc.blank()) return "blank";
  if (disc.formatting) return "overwritable";
  return disc.finalized ? "closed" : "appendable";
}

const char* modeOf(const DiscState& disc) {
  if (disc.medium != MediumKind::DvdRw) return nullptr;
  return disc.formatting ? "restricted overwrite" : "sequential";
}

DiscInfo gather(const DiscState& disc, bool loaded) {
  DiscInfo info{disc, loaded, stateOf(disc), {}, {}};
  const auto& rules = MediumRules::of(disc);
  for (const auto& session : rules.sessions(disc)) {
    info.sessions.push_back({session.number, session.leadOut, {}});
  }
  for (const auto& track : rules.tracks(disc)) {
    if (track.nextWritable && !track.reserved) info.writable = track;
    if (track.invisible) continue;
    const auto index = static_cast<std::size_t>(track.session - 1);
    if (index >= info.sessions.size()) info.sessions.push_back({track.session, {}, {}});
    info.sessions.back().number = std::max(info.sessions.back().number, track.session);
    info.sessions[std::min(index, info.sessions.size() - 1)].tracks.push_back(track);
  }
  return info;
}

double megabytes(Lba sectors) {
  return sectors * 2048.0 / 1048576.0;
}

void printTrack(const TrackView& track) {
  std::printf("  Track %d: start %d, length %d sectors%s%s%s\n", track.number, track.start,
              track.recorded, track.form == TrackForm::Audio ? ", audio" : "",
              track.reserved ? ", reserved" : "", track.complete ? "" : ", open");
}

void printText(const DiscInfo& info) {
  std::printf("Medium:   %s\n", std::string(nameOf(info.disc.medium)).c_str());
  if (const char* mode = modeOf(info.disc)) std::printf("Mode:     %s\n", mode);
  std::printf("State:    %s\n", info.state);
  std::printf("Tray:     %s\n", info.loaded ? "closed" : "open");
  std::printf("Capacity: %d sectors (%.1f MB)\n", info.disc.capacity,
              megabytes(info.disc.capacity));
  for (const auto& session : info.sessions) {
    if (session.leadOut) {
      std::printf("Session %d: closed, lead-out at %d\n", session.number, *session.leadOut);
    } else {
      std::printf("Session %d: open\n", session.number);
    }
    for (const auto& track : session.tracks) printTrack(track);
  }
  if (info.writable) {
    std::printf("Next writable address: %d\n", *info.writable->nextWritable);
  } else {
    std::printf("Next writable address: none\n");
  }
  if (info.free() > 0) {
    std::printf("Free:     %d sectors (%.1f MB)\n", info.free(), megabytes(info.free()));
  }
}

json toJson(const SessionInfo& session) {
  json tracks = json::array();
  for (const auto& track : session.tracks) {
    tracks.push_back({{"number", track.number},
                      {"audio", track.form == TrackForm::Audio},
                      {"start", track.start},
                      {"sectors", track.recorded},
                      {"reserved", track.reserved},
                      {"complete", track.complete}});
  }
  json object{{"number", session.number}, {"closed", session.leadOut.has_value()}};
  object["lead_out"] = session.leadOut ? json(*session.leadOut) : json(nullptr);
  object["tracks"] = tracks;
  return object;
}

void printJson(const DiscInfo& info) {
  json sessions = json::array();
  for (const auto& session : info.sessions) sessions.push_back(toJson(session));
  json object{{"medium", nameOf(info.disc.medium)},
              {"state", info.state},
              {"tray", info.loaded ? "closed" : "open"},
              {"capacity_sectors", info.disc.capacity},
              {"sessions", sessions}};
  object["next_writable_address"] =
      info.writable ? json(*info.writable->nextWritable) : json(nullptr);
  object["free_sectors"] = info.free();
  if (const char* mode = modeOf(info.disc)) object["mode"] = mode;
  std::printf("%s\n", object.dump(2).c_str());
}

}  // namespace

int printInfo(const std::filesystem::path& disc, InfoForm form) {
  const auto drive = openDisc(disc);
  if (!drive) return kDiscUnusable;
  std::string error;
  const auto state = drive->inspect(&error);
  if (!state) return complain(error), kDiscUnusable;
  const auto info = gather(*state, drive->mediaLoaded());
  if (form == InfoForm::Json)
    printJson(info);
  else
    printText(info);
  return kDone;
}

}  // namespace kelvane::virtualdrive::tool
