// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>

#include "helpers/isovolume/block_source.h"

namespace kelvane::isovolume {

/// The numbers of ECMA-119 that stand in both byte orders (7.2.3, 7.3.3), read from their
/// little-endian half, which is the one that every writer gets right. The caller has seen to it
/// that the bytes exist.
inline std::uint16_t bothEndian16(Bytes bytes, std::size_t offset) {
  return static_cast<std::uint16_t>(bytes[offset] | bytes[offset + 1] << 8);
}

inline std::uint32_t bothEndian32(Bytes bytes, std::size_t offset) {
  return static_cast<std::uint32_t>(bytes[offset]) |
         static_cast<std::uint32_t>(bytes[offset + 1]) << 8 |
         static_cast<std::uint32_t>(bytes[offset + 2]) << 16 |
         static_cast<std::uint32_t>(bytes[offset + 3]) << 24;
}

/// The number of blocks that `bytes` bytes need.
inline std::uint64_t blocksFor(std::uint64_t bytes) {
  return bytes / kBlockSize + (bytes % kBlockSize != 0 ? 1 : 0);
}

}  // namespace kelvane::isovolume
