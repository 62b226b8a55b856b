// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/recording/overwritten_disc.h"

#include <algorithm>
#include <array>

#include "platform/recording/mmc/command.h"

namespace kelvane {
namespace {

constexpr size_t kBlockBytes = 2048;
constexpr mmc::Sense kOutOfRange{0x05, 0x21, 0x00};

// READ (10) of one block (MMC-5, 6.23).
bool nothingStandsAt(mmc::Transport& transport, uint8_t address) {
  const std::array<uint8_t, 10> read{0x28, 0, 0, 0, 0, address, 0, 0, 1, 0};
  std::array<uint8_t, kBlockBytes> block{};
  const mmc::Answer answer = mmc::ask(transport, read, block);
  if (!answer.isGood()) {
    return answer.status == mmc::Status::CheckCondition && answer.sense == kOutOfRange;
  }
  return answer.transferred == kBlockBytes &&
         std::all_of(block.begin(), block.end(), [](uint8_t byte) { return byte == 0; });
}

}  // namespace

// Volume descriptors are looked for first: one block tells of most discs that they are not empty.
bool overwrittenDiscIsEmpty(mmc::Transport& transport) {
  constexpr uint8_t kFirstDescriptor = 16;
  constexpr uint8_t kBlocks = 32;
  for (uint8_t address = kFirstDescriptor; address < kBlocks; ++address) {
    if (!nothingStandsAt(transport, address)) return false;
  }
  for (uint8_t address = 0; address < kFirstDescriptor; ++address) {
    if (!nothingStandsAt(transport, address)) return false;
  }
  return true;
}

}  // namespace kelvane
