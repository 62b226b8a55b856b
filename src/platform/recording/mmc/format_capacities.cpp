// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/recording/mmc/format_capacities.h"

#include <algorithm>
#include <array>

#include "platform/recording/mmc/command.h"

namespace kelvane::mmc {
namespace {

constexpr size_t kHeaderBytes = 4;
constexpr size_t kDescriptorBytes = 8;
constexpr size_t kReplyBytes = 252;

bool coversWholeMedium(uint8_t type) {
  constexpr std::array<uint8_t, 4> kTypes{0x00, 0x10, 0x15, 0x26};
  return std::ranges::find(kTypes, type) != kTypes.end();
}

}  // namespace

std::optional<uint32_t> parseFormatCapacity(std::span<const uint8_t> reply) {
  const size_t end = std::min(reply.size(), kHeaderBytes + byteAt(reply, 3));
  std::optional<uint32_t> most;
  // The first descriptor tells what the medium is formatted to now.
  for (size_t at = kHeaderBytes + kDescriptorBytes; at + kDescriptorBytes <= end;
       at += kDescriptorBytes) {
    const auto type = static_cast<uint8_t>(byteAt(reply, at + 4) >> 2);
    if (coversWholeMedium(type)) most = std::max(most.value_or(0), longAt(reply, at));
  }
  return most;
}

std::optional<uint32_t> readFormatCapacity(Transport& transport) {
  std::array<uint8_t, kReplyBytes> data{};
  constexpr std::array<uint8_t, 10> kCommandBlock{0x23, 0, 0, 0, 0, 0, 0, 0, kReplyBytes};
  const Answer answer = ask(transport, kCommandBlock, data);
  if (!answer.isGood()) return std::nullopt;
  return parseFormatCapacity(std::span(data).first(answer.transferred));
}

}  // namespace kelvane::mmc
