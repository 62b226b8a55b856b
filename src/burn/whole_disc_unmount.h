// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <string>

#include "platform/volumes/volume_services.h"

namespace kelvane {

/// Asks that every volume of the disc in the drive is unmounted: the visible ones and the hidden
/// one, whether mounted from the drive itself or from a slice. Each is tried once; one that is in
/// use stays, and nobody is told. Any thread.
void requestWholeDiscUnmount(const std::string& bsdName, VolumeServices& services);

}  // namespace kelvane
