// SPDX-License-Identifier: GPL-2.0-or-later
#include "helpers/isovolume/continuation_reader.h"

#include <algorithm>

namespace kelvane::isovolume {

bool ContinuationReader::read(std::uint64_t block, std::size_t offset, std::size_t length,
                              std::vector<std::uint8_t>* out) {
  if (offset >= kBlockSize || length > kLongestArea || length > bytesLeft_) return false;
  bytesLeft_ -= length;
  while (length > 0) {
    const CachedBlock* cached = cachedBlock(block);
    if (cached == nullptr) return false;
    const std::size_t part = std::min(length, kBlockSize - offset);
    const Bytes piece = Bytes(cached->bytes).subspan(offset, part);
    out->insert(out->end(), piece.begin(), piece.end());
    length -= part;
    offset = 0;
    ++block;
  }
  return true;
}

const ContinuationReader::CachedBlock* ContinuationReader::cachedBlock(std::uint64_t number) {
  CachedBlock& slot = cache_[number % cache_.size()];
  if (slot.number == number) return &slot;
  slot.number = UINT64_MAX;
  if (number >= source_.sizeInBlocks()) return nullptr;
  if (!source_.readBlocks(number, slot.bytes)) return nullptr;
  slot.number = number;
  return &slot;
}

}  // namespace kelvane::isovolume
