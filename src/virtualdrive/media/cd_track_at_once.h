// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <optional>
#include <span>

#include "virtualdrive/sense.h"
#include "virtualdrive/state/disc_folder.h"

namespace kelvane::virtualdrive {

/// The form of the sectors that the write parameters page announces; empty where this drive cannot
/// write it: raw sectors of data, and such with subchannels.
std::optional<TrackForm> trackFormOf(const WriteParameters& parameters);

/// Writes to the growing track, to the invisible one, which becomes a track by it, or to a reserved
/// one; in each case only at its next writable address (MMC-5, 6.44).
Sense writeTrackAtOnce(DiscFolder& folder, Lba first, std::span<const std::uint8_t> data);

/// Ends a track: pads a growing one to four seconds and a reserved one to its size.
Sense completeTrack(DiscFolder& folder, Track& track);

Sense reserveCdTrack(DiscFolder& folder, Lba sectors);

}  // namespace kelvane::virtualdrive
