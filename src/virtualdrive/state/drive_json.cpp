// SPDX-License-Identifier: GPL-2.0-or-later
#include "virtualdrive/state/drive_json.h"

#include <algorithm>
#include <cctype>

#include "virtualdrive/state/json_reader.h"

namespace kelvane::virtualdrive {
namespace {

using nlohmann::json;

constexpr const char* kFormat = "kelvane-drive";
constexpr std::int32_t kVersion = 1;
constexpr std::int32_t kFastest = 0xFFFF;
constexpr std::string_view kDigits = "0123456789abcdef";

std::string toHexadecimal(const WriteParameters& parameters) {
  std::string text;
  for (const unsigned byte : parameters.page) {
    text += kDigits[byte >> 4];
    text += kDigits[byte & 0xF];
  }
  return text;
}

bool fromHexadecimal(std::string_view text, WriteParameters* parameters) {
  if (text.size() != 2 * WriteParameters::kBytes) return false;
  for (std::size_t i = 0; i < WriteParameters::kBytes; ++i) {
    const auto high = kDigits.find(text[2 * i]);
    const auto low = kDigits.find(text[2 * i + 1]);
    if (high == std::string_view::npos || low == std::string_view::npos) return false;
    parameters->page[i] = static_cast<std::uint8_t>(high << 4 | low);
  }
  return parameters->page[0] == 0x05 && parameters->page[1] == 0x32;
}

bool isSerial(const std::string& text) {
  return !text.empty() && text.size() <= 32 && std::ranges::all_of(text, [](unsigned char c) {
    return c < 0x80 && std::isalnum(c) != 0;
  });
}

}  // namespace

WriteParameters WriteParameters::standard(MediumKind kind) {
  WriteParameters parameters;
  auto& page = parameters.page;
  const auto writeType = isCd(kind) ? Type::TrackAtOnce : Type::Incremental;
  page[0] = 0x05;
  page[1] = 0x32;
  page[2] = 0x40 | static_cast<std::uint8_t>(writeType);  // guarded against buffer underruns
  page[3] = 0x04;                                         // data track, single session
  page[4] = 0x08;                                         // mode 1, 2048 bytes
  page[15] = 150;                                         // audio pause, by the standard
  return parameters;
}

std::string driveToJson(const DriveState& drive) {
  const json object{{"format", kFormat},
                    {"version", kVersion},
                    {"serial", drive.serial},
                    {"tray_open", drive.trayOpen},
                    {"removal_prevented", drive.removalPrevented},
                    {"unit_attention", drive.unitAttention},
                    {"media_event", static_cast<int>(drive.mediaEvent)},
                    {"read_speed", drive.readSpeed},
                    {"write_speed", drive.writeSpeed},
                    {"write_parameters", toHexadecimal(drive.writeParameters)}};
  return object.dump(2) + "\n";
}

std::optional<DriveState> driveFromJson(std::string_view text, std::string* error) {
  error->clear();
  const auto object = json::parse(text, nullptr, false);
  if (object.is_discarded()) {
    *error = "it is not JSON";
    return std::nullopt;
  }
  JsonReader reader(object, error);
  if (reader.text("format") != kFormat) {
    *error = "it is not the state of a drive";
    return std::nullopt;
  }
  if (reader.integer("version", 1, INT32_MAX) > kVersion) {
    *error = "the disc was written by a newer version of this program";
    return std::nullopt;
  }
  DriveState drive;
  drive.serial = reader.text("serial");
  drive.trayOpen = reader.boolean("tray_open");
  drive.removalPrevented = reader.boolean("removal_prevented");
  drive.unitAttention = reader.boolean("unit_attention");
  drive.mediaEvent = static_cast<MediaEvent>(reader.integer("media_event", 0, 3));
  drive.readSpeed = reader.integer("read_speed", 0, kFastest);
  drive.writeSpeed = reader.integer("write_speed", 0, kFastest);
  const auto page = reader.text("write_parameters");
  if (!fromHexadecimal(page, &drive.writeParameters)) {
    reader.complain("write_parameters", "is not a mode page");
  }
  if (!isSerial(drive.serial)) reader.complain("serial", "is not made of letters and digits");
  if (!error->empty()) return std::nullopt;
  return drive;
}

}  // namespace kelvane::virtualdrive
