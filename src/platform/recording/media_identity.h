// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <string>

#include "platform/recording/mmc_transport.h"

namespace kelvane {

/// Tells the disc in a drive from others: its kind, its sessions, where the next one would begin,
/// and what the last one's volume says of itself (ECMA-119, 8.4: among others its name and the
/// moment in which it was made). Equal for the same disc as long as nothing is written to it; equal
/// for two discs only where they are blank or one is a copy of the other. For this process alone.
/// Empty where there is no disc, or one that does not say.
std::string readMediaIdentity(mmc::Transport& transport);

}  // namespace kelvane
