// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "platform/volumes/volume_services.h"

namespace kelvane {
class DRDevice;
}

/// The search that the operations on a drive's visible volume share.
namespace kelvane::quellbrook {

/// "/dev/" and the drive's BSD name, or the fallback where that is empty.
std::string deviceNode(const DRDevice& device, const std::optional<std::string>& fallbackBsdName);

/// The first visible volume, in listing order, whose source begins with `node` and which `accepts`
/// takes.
std::optional<MountTableEntry> findVisibleVolume(
    const std::string& node, VolumeServices& services,
    const std::function<bool(const MountTableEntry&)>& accepts);

}  // namespace kelvane::quellbrook
