// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/recording/mmc/inquiry.h"

#include <algorithm>
#include <array>

#include "platform/recording/mmc/command.h"

namespace kelvane::mmc {
namespace {

constexpr size_t kReplyBytes = 36;
constexpr size_t kVendorAt = 8;
constexpr size_t kProductAt = 16;
constexpr size_t kRevisionAt = 32;

std::string textAt(std::span<const uint8_t> reply, size_t begin, size_t end) {
  std::string text;
  for (size_t at = begin; at < std::min(end, reply.size()); ++at) {
    const bool printable = reply[at] > 0x20 && reply[at] < 0x7F;
    text += printable ? static_cast<char>(reply[at]) : ' ';
  }
  const size_t first = text.find_first_not_of(' ');
  if (first == std::string::npos) return {};
  return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

}  // namespace

std::optional<Inquiry> parseInquiry(std::span<const uint8_t> reply) {
  if (reply.size() <= kProductAt) return std::nullopt;
  return Inquiry{.vendor = textAt(reply, kVendorAt, kProductAt),
                 .product = textAt(reply, kProductAt, kRevisionAt),
                 .revision = textAt(reply, kRevisionAt, kReplyBytes)};
}

std::optional<Inquiry> readInquiry(Transport& transport) {
  std::array<uint8_t, kReplyBytes> data{};
  constexpr std::array<uint8_t, 6> kCommandBlock{0x12, 0, 0, 0, kReplyBytes, 0};
  const Answer answer = ask(transport, kCommandBlock, data);
  if (!answer.isGood()) return std::nullopt;
  return parseInquiry(std::span(data).first(answer.transferred));
}

}  // namespace kelvane::mmc
