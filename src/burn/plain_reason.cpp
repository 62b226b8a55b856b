// SPDX-License-Identifier: GPL-2.0-or-later
#include "burn/plain_reason.h"

#include <algorithm>
#include <array>
#include <optional>

#include "burn/ordinary_words.h"
#include "platform/foundation/placeholders.h"
#include "platform/foundation/strings_table.h"

namespace kelvane {
namespace {

/// A message of the programs, with up to two names or numbers in it, and the text that says it. A
/// message without `second` names one thing, between `before` and `after`; without `before` none.
struct Message {
  std::string_view before;
  std::string_view second;
  std::string_view after;
  const char* key;
};

// The first that is found counts: a full disc makes mkisofs complain of a broken pipe, too.
constexpr std::array kMessages = {
    Message{"Incorrectly encoded string (", "", ") encountered.", "ReasonNameNotText"},
    Message{"Error: ", " and ", " have the same Joliet name", "ReasonNamesTooAlike"},
    Message{"File ", "", " is larger than 4GiB-1", "ReasonFileTooLarge"},
    Message{"File ", "", " is not readable - ignoring", "ReasonFileNotReadable"},
    Message{"Non zero-length file '", "", "' assigned zero extent", "ReasonFolderHidden"},
    Message{"", "", "Problems with old ISO directory entry", "ReasonFolderForFile"},
    Message{"", "", "Cannot parse Rock Ridge attributes", "ReasonLinkLength"},
    Message{"", "", "blocks are free, ", "ReasonDiscFull"},
    Message{"", "", " are free on the disc.", "ReasonDiscFull"},
    Message{"", "", "next session would cross 4GB boundary", "ReasonSessionLimit"},
    Message{"", "", "FORMAT allocaion length isn't sane", "ReasonFormatUnknown"},
    Message{"", "", "END OF USER AREA", "ReasonDiscFull"},
    Message{"", "", "LOGICAL BLOCK ADDRESS OUT OF RANGE]: No space left", "ReasonDiscFull"},
    Message{"", "", "No space left on device. cannot fwrite", "ReasonTemporaryFolderFull"},
    Message{"", "", "The drive does not say where the next session may begin.",
            "ReasonNoNextSession"},
    Message{"", "", "The program that builds the session image is missing.",
            "ReasonNoImageBuilder"},
    Message{"", "", "mkisofs was killed before the image was complete.",
            "ReasonImageBuilderKilled"},
};

std::string volumePath(std::string_view path, std::string_view overlayDirectory) {
  if (!overlayDirectory.empty() && path.starts_with(overlayDirectory)) {
    path.remove_prefix(overlayDirectory.size());
    if (path.starts_with('/')) path.remove_prefix(1);
  }
  return std::string(path);
}

std::string_view lineAround(std::string_view text, size_t position) {
  const size_t before = text.rfind('\n', position);
  const size_t start = before == std::string_view::npos ? 0 : before + 1;
  return text.substr(start, text.find('\n', position) - start);
}

std::optional<std::string> readMessage(const Message& message, std::string_view said,
                                       std::string_view overlayDirectory) {
  const size_t found = said.find(message.after);
  if (found == std::string_view::npos) return std::nullopt;
  const std::string text = localizedString(message.key);
  if (message.before.empty()) return text;
  const std::string_view line = lineAround(said, found);
  const size_t begin = line.find(message.before);
  const size_t end = line.find(message.after);
  if (begin == std::string_view::npos || begin + message.before.size() > end) return std::nullopt;
  const size_t start = begin + message.before.size();
  const std::string_view named = line.substr(start, end - start);
  if (message.second.empty()) return format(text, volumePath(named, overlayDirectory));
  const size_t between = named.find(message.second);
  if (between == std::string_view::npos) return std::nullopt;
  return format(text, volumePath(named.substr(0, between), overlayDirectory),
                volumePath(named.substr(between + message.second.size()), overlayDirectory));
}

}  // namespace

std::string plainReason(std::string_view said, std::string_view overlayDirectory) {
  for (const Message& message : kMessages) {
    if (auto reason = readMessage(message, said, overlayDirectory)) return *reason;
  }
  return {};
}

bool reasonLiesInTheDisc(std::string_view said) {
  for (const Message& message : kMessages) {
    if (said.find(message.after) == std::string_view::npos) continue;
    const std::string_view key = message.key;
    return key == "ReasonLinkLength" || key == "ReasonSessionLimit";
  }
  return false;
}

std::string withPlainReason(const std::string& said, std::string_view overlayDirectory) {
  const std::string reason = plainReason(said, overlayDirectory);
  const std::string words = withoutOrdinaryLines(said);
  const auto isAllOf = [&words](const Message& message) {
    return message.before.empty() && message.after == words;
  };
  if (std::ranges::any_of(kMessages, isAllOf)) return reason;
  return reason.empty() ? words : reason + "\n" + words;
}

}  // namespace kelvane
