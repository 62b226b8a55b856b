// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <cstdint>

#include "virtualdrive/medium_kind.h"

namespace kelvane::virtualdrive {

/// A time on a CD: 75 frames a second, with LBA 0 at 00:02:00 (MMC-5, 4.3.7).
struct Msf {
  std::uint8_t minute = 0;
  std::uint8_t second = 0;
  std::uint8_t frame = 0;
};

inline constexpr Lba kFramesBeforeLbaZero = 150;

/// A time that is later than three bytes can tell, as addresses of a DVD may be, is the latest
/// there is.
constexpr Msf toMsf(Lba lba) {
  constexpr Lba kLatest = 256 * 4500 - 1 - kFramesBeforeLbaZero;
  if (lba > kLatest) return {255, 59, 74};
  const auto frames = lba + kFramesBeforeLbaZero;
  return {static_cast<std::uint8_t>(frames / 4500), static_cast<std::uint8_t>(frames / 75 % 60),
          static_cast<std::uint8_t>(frames % 75)};
}

constexpr Lba fromMsf(const Msf& time) {
  return (time.minute * 60 + time.second) * 75 + time.frame - kFramesBeforeLbaZero;
}

}  // namespace kelvane::virtualdrive
