// SPDX-License-Identifier: GPL-2.0-or-later
#include "app/disc_volumes.h"

#include "platform/recording/dr_device.h"
#include "platform/volumes/unmount.h"

namespace kelvane {
namespace {

constexpr std::chrono::milliseconds kPause{100};
constexpr int kMostAttempts = 10;
// More than one volume of a disc is rare; what never ends is a mount table that does not change.
constexpr int kMostVolumes = 20;

// The disc's volume that comes first in listing order.
std::optional<std::string> visibleVolumeOf(const DRDevice& device, VolumeServices& services) {
  const std::string node = "/dev/" + device.bsdName();
  for (const std::string& path : services.visibleVolumePaths()) {
    const std::optional<MountTableEntry> entry = services.mountTableEntryOf(path);
    if (!entry) continue;
    if (entry->mountedFrom == node || entry->mountedFrom == node + "s0") return entry->mountedOn;
  }
  return std::nullopt;
}

bool unmountVolume(const std::string& volume, VolumeServices& services,
                   const std::function<void(std::chrono::milliseconds)>& sleep) {
  int status = services.unmountVolumeSync(volume);
  for (int attempt = 1; status == kUnmountBusy && attempt < kMostAttempts; ++attempt) {
    sleep(kPause);
    status = services.unmountVolumeSync(volume);
  }
  return status == kUnmountDone;
}

}  // namespace

std::optional<std::string> unmountVisibleVolumes(
    const DRDevice& device, VolumeServices& services,
    const std::function<void(std::chrono::milliseconds)>& sleep) {
  std::optional<std::string> volume = visibleVolumeOf(device, services);
  for (int count = 0; volume && count < kMostVolumes; ++count) {
    if (!unmountVolume(*volume, services, sleep)) return volume;
    volume = visibleVolumeOf(device, services);
  }
  return volume;
}

}  // namespace kelvane
