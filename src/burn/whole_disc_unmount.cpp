// SPDX-License-Identifier: GPL-2.0-or-later
#include "burn/whole_disc_unmount.h"

#include "platform/foundation/paths.h"

namespace kelvane {
namespace {

bool isOfDisc(const MountTableEntry& volume, const std::string& device) {
  return volume.mountedFrom == device || volume.mountedFrom.starts_with(device + "s");
}

}  // namespace

void requestWholeDiscUnmount(const std::string& bsdName, VolumeServices& services) {
  std::vector<std::string> candidates = services.visibleVolumePaths();
  candidates.push_back(paths::hiddenMountPoint());
  for (const std::string& path : candidates) {
    const std::optional<MountTableEntry> entry = services.mountTableEntryOf(path);
    if (!entry || !isOfDisc(*entry, "/dev/" + bsdName)) continue;
    if (const auto volume = services.volumeAtPath(path)) services.unmountVolumeSync(*volume);
  }
}

}  // namespace kelvane
