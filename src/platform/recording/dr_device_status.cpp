// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/recording/dr_device_status.h"

namespace kelvane {

std::optional<int64_t> lastSessionStart(const DRDeviceStatus& status) {
  if (!status.DRDeviceMediaInfoKey) return std::nullopt;
  const DRDeviceMediaInfo& media = *status.DRDeviceMediaInfoKey;
  std::optional<int64_t> start;
  for (const auto& [reference, track] : media.DRDeviceTrackInfoKey) {
    if (track.DRTrackSessionNumberKey != media.DRDeviceMediaSessionCountKey) continue;
    const std::optional<int64_t> address = track.DRTrackStartAddressKey;
    if (address && (!start || *address < *start)) start = address;
  }
  return start;
}

}  // namespace kelvane
