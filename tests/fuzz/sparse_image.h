// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "helpers/isovolume/block_source.h"

namespace kelvane::fuzz {

/// A block of a disc image that is not all zeros, or that cannot be read.
struct SparseBlock {
  std::uint64_t number = 0;
  bool readable = true;
  std::vector<std::uint8_t> content;  ///< the block's beginning; zeros follow
};

/// A disc image as the fuzzer changes it: small, because a disc is mostly zeros, and with room for
/// a byte more in one block without moving all that follow.
///
/// Bytes: the session's start (2, little-endian), then for each block the number of zero blocks in
/// front of it (1; 255 stands for 255 of them and no block), a word (2, little-endian) with the
/// length of the content in its lower 12 bits and "unreadable" in bit 15, and the content. The
/// image ends with the last block. Every sequence of bytes is an image: lengths are cut to what
/// there is.
struct SparseImage {
  std::uint32_t sessionStart = 0;
  std::uint64_t sizeInBlocks = 0;
  std::vector<SparseBlock> blocks;  ///< by ascending number

  static SparseImage decode(std::span<const std::uint8_t> bytes);
  [[nodiscard]] std::vector<std::uint8_t> encode() const;
};

/// The image as a disc that is read. It ends the process when it is asked for a block that is not
/// there: the reader has to look first.
class SparseImageSource final : public isovolume::BlockSource {
 public:
  /// `image` is borrowed.
  explicit SparseImageSource(const SparseImage& image) : image_(image) {}

  bool readBlocks(std::uint64_t first, std::span<std::uint8_t> out) override;
  [[nodiscard]] std::uint64_t sizeInBlocks() const override { return image_.sizeInBlocks; }

  [[nodiscard]] std::uint64_t blocksRead() const { return blocksRead_; }

 private:
  const SparseImage& image_;
  std::uint64_t blocksRead_ = 0;
};

}  // namespace kelvane::fuzz
