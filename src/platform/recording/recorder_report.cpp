// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/recording/recorder_report.h"

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>
#include <utility>

namespace kelvane {
namespace {

using Kind = RecorderReport::Kind;
using nlohmann::json;

constexpr std::array<std::pair<std::string_view, Kind>, 7> kKinds{{
    {"preparing", Kind::Preparing},
    {"writing", Kind::Writing},
    {"closing", Kind::Closing},
    {"erasing", Kind::Erasing},
    {"finishing", Kind::Finishing},
    {"done", Kind::Done},
    {"failed", Kind::Failed},
}};

std::optional<Kind> kindOf(const json& message) {
  const auto state = message.find("state");
  if (state == message.end() || !state->is_string()) return std::nullopt;
  const auto& name = state->get_ref<const std::string&>();
  for (const auto& [known, kind] : kKinds) {
    if (known == name) return kind;
  }
  return std::nullopt;
}

// Stores a number where the message has one; false where it has something else in its place.
bool readNumber(const json& message, const char* key, int64_t& number) {
  const auto value = message.find(key);
  if (value == message.end()) return true;
  if (!value->is_number_integer()) return false;
  number = std::max<int64_t>(value->get<int64_t>(), 0);
  return true;
}

bool readText(const json& message, const char* key, std::string& text) {
  const auto value = message.find(key);
  if (value == message.end()) return true;
  if (!value->is_string()) return false;
  text = value->get_ref<const std::string&>();
  return true;
}

}  // namespace

std::optional<RecorderReport> parseRecorderReport(std::string_view line) {
  const json message = json::parse(line, nullptr, /*allow_exceptions=*/false);
  if (!message.is_object()) return std::nullopt;
  const std::optional<Kind> kind = kindOf(message);
  if (!kind) return std::nullopt;
  RecorderReport report{.kind = *kind, .error = {}};
  const bool complete = readNumber(message, "written", report.writtenBlocks) &&
                        readNumber(message, "total", report.totalBlocks) &&
                        readNumber(message, "erased", report.erasedParts) &&
                        readNumber(message, "parts", report.totalParts) &&
                        readNumber(message, "address", report.startAddress) &&
                        readText(message, "error", report.error);
  if (!complete) return std::nullopt;
  return report;
}

}  // namespace kelvane
