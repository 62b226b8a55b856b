// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <optional>

#include "platform/recording/dr_burn.h"
#include "platform/recording/dr_track.h"

namespace kelvane {

/// The speed that stands for the tag of the chosen item of the speed menu, in kilobytes (1000
/// bytes) a second: 1 and 2 are single and double CD speed; any other tag leaves it to the burner.
std::optional<float> requestedSpeedForTag(int tag);

/// What is asked of the burn of a CD session.
DRBurnProperties cdBurnProperties(int speedTag);

/// What is asked of the one track of a CD session, whose image is `length` long.
DRTrackProperties imageTrackProperties(DRMSF length);

}  // namespace kelvane
