// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "platform/recording/mmc_transport.h"

namespace kelvane::mmc {

/// What a drive knows of one track. Addresses and lengths count blocks of 2048 bytes; addresses
/// before the first block of a CD are negative.
struct TrackInformation {
  uint16_t track = 0;
  uint16_t session = 0;
  bool blank = false;    ///< Nothing has been written to it yet.
  bool damaged = false;  ///< Left behind by a recording that was cut off.
  int32_t start = 0;
  /// Where the next block of this track would be written; absent where nothing can be.
  std::optional<int32_t> nextWritableAddress;
  uint32_t freeBlocks = 0;
  uint32_t size = 0;
};

/// Reads a reply to READ TRACK INFORMATION. Empty where it is too short to hold the track's size.
/// (MMC-5, 6.27.3)
std::optional<TrackInformation> parseTrackInformation(std::span<const uint8_t> reply);

/// READ TRACK INFORMATION for the track of that number. Empty where the drive knows of none.
/// (MMC-5, 6.27)
std::optional<TrackInformation> readTrackInformation(Transport& transport, uint16_t track);

}  // namespace kelvane::mmc
