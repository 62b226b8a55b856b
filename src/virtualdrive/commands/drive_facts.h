// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <array>
#include <span>
#include <string_view>

#include "virtualdrive/medium_kind.h"

namespace kelvane::virtualdrive {

// What the drive is, wherever it has to say so.

inline constexpr std::string_view kVendor = "KELVANE";
inline constexpr std::string_view kProduct = "SOFTWARE BURNER";
inline constexpr std::string_view kRevision = "1.00";

inline constexpr int kBufferBytes = 2 * 1024 * 1024;

/// Speeds in 1000 bytes a second.
struct DriveSpeeds {
  int slowestRead;
  int read;
  /// Fastest first.
  std::span<const int> write;
};

/// CDs: 48x to 4x. Single speed is 176.4 of these, counted with 2352 bytes a sector.
inline constexpr std::array<int, 5> kCdWriteSpeeds{8467, 7056, 4234, 2822, 706};
/// DVDs: 8x to 1x, single speed being 1385.
inline constexpr std::array<int, 5> kDvdWriteSpeeds{11080, 8310, 5540, 2770, 1385};

constexpr DriveSpeeds speedsFor(MediumKind kind) {
  if (isCd(kind)) return {706, 8467, kCdWriteSpeeds};
  return {1385, 22160, kDvdWriteSpeeds};
}

}  // namespace kelvane::virtualdrive
