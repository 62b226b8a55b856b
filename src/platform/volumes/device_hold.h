// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <string>

namespace kelvane {

class VolumeServices;

/// Waits until nobody has the block device `node` to himself any more (O_EXCL; a mounted volume has
/// it so), for three seconds at the most. A user-space volume lets go of its device shortly after
/// it has been unmounted, and a program that burns is refused until then. Returns at once where
/// there is no such device. Any thread; sleeps by `services`.
void waitUntilNobodyHolds(const std::string& node, VolumeServices& services);

}  // namespace kelvane
