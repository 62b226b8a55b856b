// SPDX-License-Identifier: GPL-2.0-or-later
#include <vector>

#include "media/quellbrook.h"
#include "media/visible_volume.h"
#include "platform/foundation/placeholders.h"
#include "platform/recording/dr_device.h"

namespace kelvane::quellbrook {
namespace {

// The start addresses of the next-to-last and the last track, up to the first that is missing.
std::vector<int64_t> lastStartAddresses(const DRDeviceMediaInfo& media) {
  const std::vector<DRTrackReference>& references = media.DRDeviceTrackRefsKey;
  std::vector<int64_t> addresses;
  for (size_t i = references.size() - 2; i < references.size(); ++i) {
    const auto track = media.DRDeviceTrackInfoKey.find(references[i]);
    if (track == media.DRDeviceTrackInfoKey.end()) break;
    if (!track->second.DRTrackStartAddressKey) break;
    addresses.push_back(*track->second.DRTrackStartAddressKey);
  }
  return addresses;
}

}  // namespace

std::optional<std::string> sessionString(const DRDevice& device) {
  const DRDeviceStatus status = device.status();
  if (!status.DRDeviceMediaInfoKey) return std::nullopt;
  const DRDeviceMediaInfo& media = *status.DRDeviceMediaInfoKey;
  const size_t tracks = media.DRDeviceTrackRefsKey.size();
  if (tracks == 0) return std::nullopt;
  if (tracks == 1) return "0";
  const std::vector<int64_t> addresses = lastStartAddresses(media);
  if (addresses.empty()) return std::nullopt;
  if (addresses.size() == 1) return format("%@", std::to_string(addresses[0]));
  return format("%@,%@", std::to_string(addresses[0]), std::to_string(addresses[1]));
}

bool mediaKelvaneCompliant(const DRDevice& device,
                           const std::optional<std::string>& fallbackBsdName,
                           VolumeServices& services) {
  const auto isIso = [](const MountTableEntry& volume) { return volume.type == "cd9660"; };
  return findVisibleVolume(deviceNode(device, fallbackBsdName), services, isIso).has_value();
}

double fsMediaMBUsed(const DRDevice& /*device*/, const std::string& path,
                     VolumeServices& services) {
  const std::optional<MountTableEntry> volume = services.mountTableEntryOf(path);
  if (!volume) return 0.0;
  return static_cast<double>(volume->totalBlocks) * static_cast<double>(volume->blockSize) /
         1024.0 / 1024.0;
}

}  // namespace kelvane::quellbrook
