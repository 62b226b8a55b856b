// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "virtualdrive/state/disc_state.h"

namespace kelvane::virtualdrive {

// The areas between the data of a CD, in sectors (IEC 60908; the Orange Book's parts II and III).

/// A track that is written at once ends with two sectors of run-out, which cannot be read.
inline constexpr Lba kCdRunOut = 2;
/// The gap before a track, which holds the run-in.
inline constexpr Lba kCdGap = 150;
inline constexpr Lba kCdLeadIn = 4500;
inline constexpr Lba kCdFirstLeadOut = 6750;
inline constexpr Lba kCdFurtherLeadOut = 2250;

/// From the beginning of the lead-out of session `closedSessions` to the first sector of the
/// session after it.
constexpr Lba cdLeadOutToNextSession(std::size_t closedSessions) {
  return (closedSessions <= 1 ? kCdFirstLeadOut : kCdFurtherLeadOut) + kCdLeadIn + kCdGap;
}

/// Where a new track's data begins.
Lba cdNextTrackStart(const DiscState& disc);

/// Where the lead-out of the outermost session can begin at the latest.
constexpr Lba cdLastPossibleLeadOut(const DiscState& disc) {
  return disc.capacity + kCdRunOut;
}

}  // namespace kelvane::virtualdrive
