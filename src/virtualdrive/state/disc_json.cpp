// SPDX-License-Identifier: GPL-2.0-or-later
#include "virtualdrive/state/disc_json.h"

#include <algorithm>

#include "virtualdrive/state/disc_checks.h"
#include "virtualdrive/state/json_reader.h"

namespace kelvane::virtualdrive {
namespace {

using nlohmann::json;

constexpr const char* kFormat = "kelvane-disc";
constexpr std::int32_t kVersion = 1;
constexpr std::size_t kMostTracks = 99;

json toJson(const Track& track) {
  json object{{"session", track.session},
              {"start", track.start},
              {"reserved", track.reserved},
              {"complete", track.complete},
              {"form", static_cast<int>(track.form)}};
  if (!track.growsWithFile()) object["sectors"] = track.recorded;
  if (track.atOnce) object["at_once"] = true;
  return object;
}

json toJson(const CueSheet& sheet) {
  json tracks = json::array();
  for (const auto& track : sheet.tracks) {
    tracks.push_back({{"start", track.start},
                      {"sectors", track.sectors},
                      {"form", static_cast<int>(track.form)}});
  }
  return {{"lead_out", sheet.leadOut}, {"gap_written", sheet.gapWritten}, {"tracks", tracks}};
}

json toJson(const DiscState& disc) {
  json tracks = json::array();
  for (const auto& track : disc.tracks) tracks.push_back(toJson(track));
  json sessions = json::array();
  for (const auto& session : disc.sessions) {
    sessions.push_back({{"first_track", session.firstTrack},
                        {"last_track", session.lastTrack},
                        {"lead_out", session.leadOut}});
  }
  json object{{"format", kFormat},
              {"version", kVersion},
              {"medium", nameOf(disc.medium)},
              {"capacity_sectors", disc.capacity},
              {"finalized", disc.finalized},
              {"blanking", false},
              {"tracks", tracks},
              {"sessions", sessions}};
  if (disc.cueSheet) object["cue_sheet"] = toJson(*disc.cueSheet);
  if (disc.minimallyBlanked) object["minimally_blanked"] = true;
  if (disc.formatting) {
    object["formatted"] = {{"sectors", disc.formatting->sectors},
                           {"growing", disc.formatting->growing}};
  }
  return object;
}

TrackForm readForm(JsonReader& reader) {
  return static_cast<TrackForm>(reader.integer("form", 0, 2));
}

Track readTrack(const json& object, int number, std::string* error) {
  JsonReader reader(object, error);
  Track track;
  track.number = number;
  track.session = reader.integer("session", 1, static_cast<std::int32_t>(kMostTracks));
  track.start = reader.integer("start", 0, kMaximalCapacity);
  track.reserved = reader.integer("reserved", 0, kMaximalCapacity);
  track.complete = reader.boolean("complete");
  track.form = readForm(reader);
  if (!track.growsWithFile()) track.recorded = reader.integer("sectors", 0, kMaximalCapacity);
  if (reader.has("at_once")) track.atOnce = reader.boolean("at_once");
  return track;
}

Session readSession(const json& object, int number, std::string* error) {
  JsonReader reader(object, error);
  Session session;
  session.number = number;
  session.firstTrack = reader.integer("first_track", 1, static_cast<std::int32_t>(kMostTracks));
  session.lastTrack = reader.integer("last_track", 1, static_cast<std::int32_t>(kMostTracks));
  session.leadOut = reader.integer("lead_out", 1, kMaximalCapacity + 2);
  return session;
}

CueSheet readCueSheet(const json& object, std::string* error) {
  JsonReader reader(object, error);
  CueSheet sheet;
  sheet.leadOut = reader.integer("lead_out", 1, kMaximalCdCapacity + 2);
  sheet.gapWritten = reader.integer("gap_written", 0, 150);
  for (const auto& entry : reader.list("tracks", kMostTracks)) {
    JsonReader fields(entry, error);
    sheet.tracks.push_back({fields.integer("start", 0, kMaximalCdCapacity),
                            fields.integer("sectors", 1, kMaximalCdCapacity), readForm(fields)});
  }
  return sheet;
}

Formatting readFormatting(const json& object, std::string* error) {
  JsonReader reader(object, error);
  Formatting formatting;
  formatting.sectors = reader.integer("sectors", 0, kMaximalCapacity);
  formatting.growing = reader.boolean("growing");
  return formatting;
}

void readHead(JsonReader& reader, DiscState* disc, std::string* error) {
  const auto name = reader.text("medium");
  const auto kind = mediumKindNamed(name);
  if (error->empty() && !kind) *error = "the medium “" + name + "” is not known";
  disc->medium = kind.value_or(MediumKind::CdR);
  const auto bounds = capacityBounds(disc->medium);
  disc->capacity = reader.integer("capacity_sectors", bounds.smallest, bounds.largest);
  disc->finalized = reader.boolean("finalized");
  if (reader.has("minimally_blanked")) {
    disc->minimallyBlanked = reader.boolean("minimally_blanked");
  }
  if (reader.has("formatted")) {
    disc->formatting = readFormatting(reader.at("formatted"), error);
  }
}

bool isOurVersion(JsonReader& reader, std::string* error) {
  if (reader.text("format") != kFormat) {
    *error = "it is not the description of a disc";
    return false;
  }
  const auto version = reader.integer("version", 1, INT32_MAX);
  if (error->empty() && version > kVersion) {
    *error = "the disc was written by a newer version of this program (format " +
             std::to_string(version) + ", this one knows " + std::to_string(kVersion) + ")";
  }
  return error->empty();
}

/// A WRITE describes a new track before its first sector arrives. Killed in between, it has not
/// happened.
void dropTrackWithoutData(ParsedDisc* parsed) {
  auto& disc = parsed->disc;
  if (disc.tracks.empty()) return;
  const auto& last = disc.tracks.back();
  if (!last.growsWithFile() || last.recorded > 0) return;
  disc.tracks.pop_back();
  parsed->cutFiles = true;
  disc.fileSectors = 0;
  disc.audioSectors = 0;
  for (const auto& track : disc.tracks) {
    auto& reach = disc.reachOf(track.form);
    reach = std::max(reach, track.start + track.recorded);
  }
}

}  // namespace

std::string discToJson(const DiscState& disc) {
  return toJson(disc).dump(2) + "\n";
}

std::string blankingToJson(const DiscState& disc) {
  auto object = toJson(disc);
  object["blanking"] = true;
  return object.dump(2) + "\n";
}

std::optional<ParsedDisc> discFromJson(std::string_view text, const FileLengths& files,
                                       std::string* error) {
  error->clear();
  const auto object = json::parse(text, nullptr, false);
  if (object.is_discarded()) {
    *error = "it is not JSON";
    return std::nullopt;
  }
  JsonReader reader(object, error);
  if (!isOurVersion(reader, error)) return std::nullopt;

  ParsedDisc parsed;
  auto& disc = parsed.disc;
  readHead(reader, &disc, error);
  if (reader.boolean("blanking") && error->empty()) {
    disc.finalized = false;
    parsed.cutFiles = true;
    return parsed;
  }
  for (const auto& entry : reader.list("tracks", kMostTracks)) {
    disc.tracks.push_back(readTrack(entry, static_cast<int>(disc.tracks.size()) + 1, error));
  }
  for (const auto& entry : reader.list("sessions", kMostTracks)) {
    disc.sessions.push_back(readSession(entry, static_cast<int>(disc.sessions.size()) + 1, error));
  }
  if (reader.has("cue_sheet")) disc.cueSheet = readCueSheet(reader.at("cue_sheet"), error);
  if (error->empty()) *error = takeFileLengths(&disc, files);
  if (error->empty()) *error = contradictionIn(disc);
  if (!error->empty()) return std::nullopt;
  dropTrackWithoutData(&parsed);
  return parsed;
}

}  // namespace kelvane::virtualdrive
