// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <algorithm>
#include <utility>
#include <vector>

#include "helpers/isovolume/block_source.h"

namespace kelvane::isovolume {

/// A disc image in memory; what does not fill a last block is out of reach.
class MemoryBlockSource final : public BlockSource {
 public:
  explicit MemoryBlockSource(std::vector<std::uint8_t> image) : image_(std::move(image)) {}

  [[nodiscard]] bool readBlocks(std::uint64_t first, std::span<std::uint8_t> out) override {
    const std::uint64_t count = out.size() / kBlockSize;
    if (first > sizeInBlocks() || count > sizeInBlocks() - first) return false;
    const auto begin = image_.begin() + static_cast<std::ptrdiff_t>(first * kBlockSize);
    std::copy_n(begin, out.size(), out.begin());
    return true;
  }

  [[nodiscard]] std::uint64_t sizeInBlocks() const override { return image_.size() / kBlockSize; }

  /// The image, for whoever wants to damage it.
  [[nodiscard]] std::vector<std::uint8_t>& image() { return image_; }

 private:
  std::vector<std::uint8_t> image_;
};

}  // namespace kelvane::isovolume
