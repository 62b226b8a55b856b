// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/recording/mmc/command.h"

namespace kelvane::mmc {
namespace {

constexpr uint8_t kUnitAttention = 0x6;
// A drive may hold several unit attentions at once, each of which takes the place of one answer.
constexpr int kMostAttempts = 5;

template <typename Send>
Answer untilAnswered(const Send& send) {
  Answer answer;
  for (int attempt = 0; attempt < kMostAttempts; ++attempt) {
    answer = send();
    const bool toldOfSomethingElse =
        answer.status == Status::CheckCondition && answer.sense.key == kUnitAttention;
    if (!toldOfSomethingElse) break;
  }
  return answer;
}

}  // namespace

uint8_t byteAt(std::span<const uint8_t> reply, size_t offset) {
  return offset < reply.size() ? reply[offset] : uint8_t{0};
}

uint16_t wordAt(std::span<const uint8_t> reply, size_t offset) {
  return static_cast<uint16_t>((byteAt(reply, offset) << 8) | byteAt(reply, offset + 1));
}

uint32_t longAt(std::span<const uint8_t> reply, size_t offset) {
  const uint32_t high = wordAt(reply, offset);
  return (high << 16) | wordAt(reply, offset + 2);
}

Answer ask(Transport& transport, std::span<const uint8_t> commandBlock, std::span<uint8_t> data,
           std::chrono::milliseconds timeLimit) {
  Answer answer = untilAnswered([&] { return transport.read(commandBlock, data, timeLimit); });
  if (answer.transferred > data.size()) answer.transferred = data.size();
  return answer;
}

Answer tell(Transport& transport, std::span<const uint8_t> commandBlock,
            std::chrono::milliseconds timeLimit) {
  return ask(transport, commandBlock, {}, timeLimit);
}

Answer instruct(Transport& transport, std::span<const uint8_t> commandBlock,
                std::chrono::milliseconds timeLimit) {
  return untilAnswered([&] { return transport.write(commandBlock, {}, timeLimit); });
}

}  // namespace kelvane::mmc
