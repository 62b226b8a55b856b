// SPDX-License-Identifier: GPL-2.0-or-later
#include "fuzz/sparse_image.h"

#include <algorithm>

#include "fuzz/fuzz_check.h"

namespace kelvane::fuzz {
namespace {

using isovolume::kBlockSize;

constexpr std::uint8_t kGapWithoutBlock = 255;
constexpr unsigned kUnreadable = 0x8000;
constexpr unsigned kLengthBits = 0x0FFF;
/// More than any of the discs that we begin with, and few enough for quick runs.
constexpr std::uint64_t kMostBlocks = 65536;

unsigned wordAt(std::span<const std::uint8_t> bytes) {
  return static_cast<unsigned>(bytes[0] | bytes[1] << 8);
}

void appendWord(unsigned word, std::vector<std::uint8_t>* bytes) {
  bytes->push_back(static_cast<std::uint8_t>(word & 0xFF));
  bytes->push_back(static_cast<std::uint8_t>(word >> 8));
}

}  // namespace

SparseImage SparseImage::decode(std::span<const std::uint8_t> bytes) {
  SparseImage image;
  if (bytes.size() < 2) return image;
  image.sessionStart = wordAt(bytes);
  bytes = bytes.subspan(2);
  std::uint64_t next = 0;
  while (!bytes.empty() && next + bytes[0] < kMostBlocks) {
    next += bytes[0];
    if (bytes[0] == kGapWithoutBlock || bytes.size() < 3) {
      bytes = bytes.subspan(1);
      continue;
    }
    const unsigned word = wordAt(bytes.subspan(1));
    bytes = bytes.subspan(3);
    const std::size_t length =
        std::min({bytes.size(), kBlockSize, std::size_t{word & kLengthBits}});
    SparseBlock& block = image.blocks.emplace_back();
    block.number = next++;
    block.readable = (word & kUnreadable) == 0;
    block.content.assign(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(length));
    bytes = bytes.subspan(length);
  }
  image.sizeInBlocks = next;
  return image;
}

std::vector<std::uint8_t> SparseImage::encode() const {
  std::vector<std::uint8_t> bytes;
  appendWord(sessionStart & 0xFFFF, &bytes);
  std::uint64_t next = 0;
  for (const SparseBlock& block : blocks) {
    std::uint64_t gap = block.number - next;
    for (; gap >= kGapWithoutBlock; gap -= kGapWithoutBlock) bytes.push_back(kGapWithoutBlock);
    bytes.push_back(static_cast<std::uint8_t>(gap));
    const auto length = static_cast<unsigned>(block.content.size());
    appendWord(length | (block.readable ? 0 : kUnreadable), &bytes);
    bytes.insert(bytes.end(), block.content.begin(), block.content.end());
    next = block.number + 1;
  }
  return bytes;
}

bool SparseImageSource::readBlocks(std::uint64_t first, std::span<std::uint8_t> out) {
  const std::uint64_t count = out.size() / kBlockSize;
  FUZZ_CHECK(out.size() % kBlockSize == 0 && count > 0);
  FUZZ_CHECK(first < image_.sizeInBlocks && count <= image_.sizeInBlocks - first);
  blocksRead_ += count;
  std::ranges::fill(out, std::uint8_t{0});
  auto block = std::ranges::lower_bound(image_.blocks, first, {}, &SparseBlock::number);
  for (; block != image_.blocks.end() && block->number < first + count; ++block) {
    if (!block->readable) return false;
    std::ranges::copy(block->content, out.subspan((block->number - first) * kBlockSize).begin());
  }
  return true;
}

}  // namespace kelvane::fuzz
