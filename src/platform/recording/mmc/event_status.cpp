// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/recording/mmc/event_status.h"

#include <array>

#include "platform/recording/mmc/command.h"

namespace kelvane::mmc {
namespace {

constexpr uint8_t kPolled = 0x01;
constexpr uint8_t kMediaClassBit = 0x10;
constexpr uint8_t kMediaClass = 4;
constexpr uint8_t kNoEventAvailable = 0x80;
constexpr size_t kReplyBytes = 8;

}  // namespace

std::optional<MediaEventStatus> parseMediaEvent(std::span<const uint8_t> reply) {
  constexpr size_t kHeaderAndEventBytes = 6;
  if (reply.size() < kHeaderAndEventBytes) return std::nullopt;
  const uint8_t header = byteAt(reply, 2);
  if ((header & kNoEventAvailable) != 0 || (header & 0x07) != kMediaClass) return std::nullopt;
  MediaEventStatus status;
  status.event = static_cast<MediaEvent>(byteAt(reply, 4) & 0x0F);
  status.trayOpen = (byteAt(reply, 5) & 0x01) != 0;
  status.mediaPresent = (byteAt(reply, 5) & 0x02) != 0;
  return status;
}

std::optional<MediaEventStatus> readMediaEvent(Transport& transport) {
  std::array<uint8_t, kReplyBytes> data{};
  constexpr std::array<uint8_t, 10> kCommandBlock{0x4A, kPolled, 0, 0,          kMediaClassBit,
                                                  0,    0,       0, kReplyBytes};
  const Answer answer = ask(transport, kCommandBlock, data);
  if (!answer.isGood()) return std::nullopt;
  return parseMediaEvent(std::span(data).first(answer.transferred));
}

}  // namespace kelvane::mmc
