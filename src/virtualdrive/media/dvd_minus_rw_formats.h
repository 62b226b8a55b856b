// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "virtualdrive/media/medium_rules.h"

namespace kelvane::virtualdrive {

// What leads a DVD-RW from one of its modes into the other; each is possible from both.

/// The formats it can be given (MMC-5, 6.4.3.2.2).
std::vector<FormatCapacities::Choice> dvdMinusRwFormats(const DiscState& disc);

/// Formats it for restricted overwrite, or makes the last session of one that is formatted ready to
/// grow (format type 13h).
Sense formatDvdMinusRw(DiscFolder& folder, const FormatRequest& request);

/// Leads it back into sequential mode.
Sense blankDvdMinusRw(DiscFolder& folder, BlankExtent extent);

}  // namespace kelvane::virtualdrive
