// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <array>
#include <vector>

#include "helpers/isovolume/block_source.h"

namespace kelvane::isovolume {

/// Reads the small areas in which directory records go on elsewhere. The entries of a directory
/// mostly share a few blocks, so the last ones read are kept.
///
/// Records that go on in one and the same large area would make a small disc cost as much as a huge
/// one. All areas together may therefore be as long as the source, which is more than those of an
/// honest disc can be; then the well is dry.
class ContinuationReader {
 public:
  /// `source` is borrowed.
  explicit ContinuationReader(BlockSource& source)
      : source_(source), bytesLeft_(source.sizeInBlocks() * kBlockSize) {}

  /// Appends `length` bytes from `offset` of block `block` on to `*out`. False when the source does
  /// not have them all, or when too much has been read. Areas longer than kLongestArea and offsets
  /// behind the block are refused.
  bool read(std::uint64_t block, std::size_t offset, std::size_t length,
            std::vector<std::uint8_t>* out);

  /// An area holds the rest of one record's entries. Names and link targets need far less.
  static constexpr std::size_t kLongestArea = 8 * kBlockSize;

 private:
  struct CachedBlock {
    std::uint64_t number = UINT64_MAX;
    std::array<std::uint8_t, kBlockSize> bytes = {};
  };

  /// Null when it cannot be read.
  const CachedBlock* cachedBlock(std::uint64_t number);

  BlockSource& source_;
  std::uint64_t bytesLeft_;
  std::array<CachedBlock, 16> cache_;  ///< block n can stand at n modulo the cache's size
};

}  // namespace kelvane::isovolume
