// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/recording/mmc/track_information.h"

#include <array>

#include "platform/recording/mmc/command.h"

namespace kelvane::mmc {
namespace {

constexpr size_t kReplyBytes = 36;
// Up to the end of the track's size. Older drives leave out what follows.
constexpr size_t kLeastBytes = 28;
constexpr uint8_t kByTrackNumber = 1;

}  // namespace

std::optional<TrackInformation> parseTrackInformation(std::span<const uint8_t> reply) {
  if (reply.size() < kLeastBytes) return std::nullopt;
  TrackInformation information;
  information.track = static_cast<uint16_t>((byteAt(reply, 32) << 8) | byteAt(reply, 2));
  information.session = static_cast<uint16_t>((byteAt(reply, 33) << 8) | byteAt(reply, 3));
  information.damaged = (byteAt(reply, 5) & 0x20) != 0;
  information.blank = (byteAt(reply, 6) & 0x40) != 0;
  information.start = static_cast<int32_t>(longAt(reply, 8));
  const bool addressIsValid = (byteAt(reply, 7) & 0x01) != 0;
  if (addressIsValid) information.nextWritableAddress = static_cast<int32_t>(longAt(reply, 12));
  information.freeBlocks = longAt(reply, 16);
  information.size = longAt(reply, 24);
  return information;
}

std::optional<TrackInformation> readTrackInformation(Transport& transport, uint16_t track) {
  std::array<uint8_t, kReplyBytes> data{};
  const std::array<uint8_t, 10> commandBlock{0x52,
                                             kByTrackNumber,
                                             0,
                                             0,
                                             static_cast<uint8_t>(track >> 8),
                                             static_cast<uint8_t>(track & 0xFF),
                                             0,
                                             0,
                                             kReplyBytes};
  const Answer answer = ask(transport, commandBlock, data);
  if (!answer.isGood()) return std::nullopt;
  return parseTrackInformation(std::span(data).first(answer.transferred));
}

}  // namespace kelvane::mmc
