// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <chrono>

namespace kelvane::desktop {

/// How long a service of the desktop may take to answer before it counts as absent. Long enough for
/// one that the bus starts only now.
inline constexpr std::chrono::milliseconds kPatience{10000};

}  // namespace kelvane::desktop
