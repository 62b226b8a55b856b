// SPDX-License-Identifier: GPL-2.0-or-later
#include "media/quellbrook.h"
#include "media/visible_volume.h"
#include "platform/foundation/paths.h"
#include "platform/foundation/system_log.h"
#include "platform/recording/dr_device.h"
#include "platform/volumes/unmount.h"
#include "platform/volumes/visible_mounts.h"

namespace kelvane::quellbrook {
namespace {

constexpr std::chrono::milliseconds kPause{100};
constexpr int kMostUnmountAttempts = 50;
constexpr int kMostMountTableReads = 151;

// The status of the last attempt. A volume that the desktop still reads is busy for a while.
int unmountVisibleVolume(const std::string& volume, VolumeServices& services) {
  int attempts = 0;
  int status = kUnmountDone;
  do {
    status = services.unmountVolumeSync(volume);
    ++attempts;
    services.sleep(kPause);
    systemLog("unmount attempt %i", status);
  } while (status == kUnmountBusy && attempts < kMostUnmountAttempts);
  return status;
}

// Looks at what was read last, then reads anew: so the first look sees nothing yet, and what the
// last read gave is never looked at.
bool awaitHiddenMount(const std::string& mountPoint, VolumeServices& services) {
  std::optional<MountTableEntry> latest;
  for (int reads = 0;;) {
    if (latest && latest->type == "cd9660") return true;
    latest = services.mountTableEntryOf(mountPoint);
    ++reads;
    if (reads == kMostMountTableReads) return false;
    services.sleepUnlessMounted(kPause, mountPoint);
  }
}

}  // namespace

std::optional<std::string> mountPathForFallbackBsdName(
    const DRDevice& device, const std::optional<std::string>& fallbackBsdName,
    VolumeServices& services) {
  const auto any = [](const MountTableEntry&) { return true; };
  const std::optional<MountTableEntry> volume =
      findVisibleVolume(deviceNode(device, fallbackBsdName), services, any);
  if (!volume) return std::nullopt;
  return volume->mountedOn;
}

std::optional<std::string> remounthidden(const DRDevice& device, VolumeServices& services) {
  const std::optional<std::string> visiblePath =
      mountPathForFallbackBsdName(device, std::nullopt, services);
  if (!visiblePath) {
    systemLog("Remounting aborted: No mountpath for myself.");
    return std::nullopt;
  }
  const std::optional<std::string> volume = services.volumeAtPath(*visiblePath);
  if (!volume) return std::nullopt;
  const int status = unmountVisibleVolume(*volume, services);
  if (status != kUnmountDone) {
    systemLog("Remounting aborted: Unmount failed: %i ", status);
    return std::nullopt;
  }
  services.keepOthersFromMounting(device);
  const std::string hiddenMountPoint = paths::hiddenMountPoint();
  services.createDirectory(hiddenMountPoint);
  const std::string bsdName = mountableBsdName(device);
  // Of a disc whose last session is not known, an earlier one would be shown and continued instead.
  const std::optional<int64_t> sessionStart = lastSessionStart(device.status());
  std::unique_ptr<MountRequest> request;
  if (sessionStart) request = services.requestMount({bsdName, *sessionStart, hiddenMountPoint});
  if (sessionStart && awaitHiddenMount(hiddenMountPoint, services)) return hiddenMountPoint;
  systemLog("giving up on mounting bsd device %@", bsdName);
  return std::nullopt;
}

void unmount(const DRDevice& device, VolumeServices& services) {
  if (sessionString(device) == "0") return;
  const std::optional<std::string> volume = services.volumeAtPath(paths::hiddenMountPoint());
  if (volume) services.unmountVolumeSync(*volume);
}

}  // namespace kelvane::quellbrook
