// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <span>
#include <string>

namespace kelvane {

class DRDevice;

/// The name by which mkisofs finds the drive `current` among `devices`, all the drives there are:
/// the last component of its registry path. Where drives share that component, they count in the
/// order of their registry paths: the first has the bare name, the second "/2" appended, the third
/// "/3".
std::string mkisofsDeviceName(const DRDevice& current, std::span<DRDevice* const> devices);

}  // namespace kelvane
