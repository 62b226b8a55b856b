// SPDX-License-Identifier: GPL-2.0-or-later
#include "media/visible_volume.h"

#include "platform/foundation/placeholders.h"
#include "platform/recording/dr_device.h"

namespace kelvane::quellbrook {

std::string deviceNode(const DRDevice& device, const std::optional<std::string>& fallbackBsdName) {
  const std::string bsdName = device.bsdName();
  return format("/dev/%@", bsdName.empty() ? fallbackBsdName.value_or("") : bsdName);
}

std::optional<MountTableEntry> findVisibleVolume(
    const std::string& node, VolumeServices& services,
    const std::function<bool(const MountTableEntry&)>& accepts) {
  for (const std::string& path : services.visibleVolumePaths()) {
    std::optional<MountTableEntry> volume = services.mountTableEntryOf(path);
    if (volume && volume->mountedFrom.starts_with(node) && accepts(*volume)) return volume;
  }
  return std::nullopt;
}

}  // namespace kelvane::quellbrook
