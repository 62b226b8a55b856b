// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/recording/mmc/disc_information.h"

#include <array>

#include "platform/recording/mmc/command.h"

namespace kelvane::mmc {
namespace {

constexpr size_t kReplyBytes = 34;
// Up to the high bytes of the track and session numbers.
constexpr size_t kLeastBytes = 12;

uint16_t number(std::span<const uint8_t> reply, size_t highByte, size_t lowByte) {
  return static_cast<uint16_t>((byteAt(reply, highByte) << 8) | byteAt(reply, lowByte));
}

}  // namespace

uint16_t DiscInformation::completeSessions() const {
  if (!isOpen() || sessions == 0) return sessions;
  return static_cast<uint16_t>(sessions - 1);
}

std::optional<DiscInformation> parseDiscInformation(std::span<const uint8_t> reply) {
  if (reply.size() < kLeastBytes) return std::nullopt;
  DiscInformation information;
  const uint8_t states = byteAt(reply, 2);
  information.status = static_cast<DiscStatus>(states & 0x03);
  information.lastSession = static_cast<LastSessionState>((states >> 2) & 0x03);
  information.erasable = (states & 0x10) != 0;
  information.firstTrack = byteAt(reply, 3);
  information.sessions = number(reply, 9, 4);
  information.firstTrackInLastSession = number(reply, 10, 5);
  information.lastTrackInLastSession = number(reply, 11, 6);
  return information;
}

std::optional<DiscInformation> readDiscInformation(Transport& transport) {
  std::array<uint8_t, kReplyBytes> data{};
  constexpr std::array<uint8_t, 10> kCommandBlock{0x51, 0, 0, 0, 0, 0, 0, 0, kReplyBytes};
  const Answer answer = ask(transport, kCommandBlock, data);
  if (!answer.isGood()) return std::nullopt;
  return parseDiscInformation(std::span(data).first(answer.transferred));
}

}  // namespace kelvane::mmc
