// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <span>

#include "virtualdrive/sense.h"
#include "virtualdrive/state/disc_folder.h"

namespace kelvane::virtualdrive {

/// Takes a cue sheet for a blank disc (MMC-5, 6.33): lines of eight bytes, data tracks of 2048
/// bytes a sector, audio tracks of 2352.
Sense storeCueSheet(DiscFolder& folder, std::span<const std::uint8_t> sheet);

/// The address of the next sector: it begins 150 sectors before LBA 0.
Lba nextAddressOfCueSheet(const DiscState& disc);

/// The bytes of the sector that has to come at that address. A gap before a track is sent in the
/// form of the track.
std::size_t blockBytesOfCueSheet(const DiscState& disc, Lba at);

/// Takes the sectors that a cue sheet has announced, in order. With the last one the session is
/// closed.
Sense writeCueSheetData(DiscFolder& folder, Lba first, std::span<const std::uint8_t> data);

/// Closes the session if all its sectors are there; else 5/72/03.
Sense endCueSheet(DiscFolder& folder);

}  // namespace kelvane::virtualdrive
