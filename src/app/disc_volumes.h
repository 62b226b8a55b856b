// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>

#include "platform/volumes/volume_services.h"

namespace kelvane {

class DRDevice;

/// Unmounts every visible volume of the drive's disc: the drive's own and that of its first slice.
/// A volume that is in use is tried again for a second, since a file manager that has just looked
/// at it lets go soon. Gives the path of the volume that could not be unmounted; those before it
/// have gone then. Blocks meanwhile.
std::optional<std::string> unmountVisibleVolumes(
    const DRDevice& device, VolumeServices& services,
    const std::function<void(std::chrono::milliseconds)>& sleep);

}  // namespace kelvane
