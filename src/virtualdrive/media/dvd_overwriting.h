// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <span>

#include "virtualdrive/media/medium_rules.h"

namespace kelvane::virtualdrive {

// What formatted DVDs have in common. They show one session with one track: the formatted area.

/// The track of the formatted area, or the one that a disc which is not formatted will have.
TrackView trackOfFormattedArea(const DiscState& disc);

/// The session of the formatted area; none where nothing is formatted.
std::vector<SessionView> sessionOfFormattedArea(const DiscState& disc);

/// Good inside the formatted area, where everything can be read: what was never written is zeros.
Sense checkInsideFormattedArea(const DiscState& disc, Lba first, Lba count);

/// Writes sectors, and makes a growing area longer by it. The caller has checked the address.
Sense overwrite(DiscFolder& folder, Lba first, std::span<const std::uint8_t> data);

/// Writes the lead-out behind the formatted area, which ends its growing.
Sense endGrowing(DiscFolder& folder);

}  // namespace kelvane::virtualdrive
