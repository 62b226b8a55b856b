// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <vector>

namespace kelvane {

/// Names a track in the status of one device: its number on the disc, from 1.
using DRTrackReference = uint32_t;

/// One track of the disc. Addresses and lengths count blocks of 2048 bytes.
struct DRTrackInfo {
  /// Where the track starts; of the open track at the end of the disc the address that the drive
  /// gives as the next writable one. Absent where the drive cannot say.
  std::optional<int64_t> DRTrackStartAddressKey;
  /// How long it is; absent for the open track.
  std::optional<int64_t> DRTrackLengthKey;
  /// The session that holds it, from 1.
  uint32_t DRTrackSessionNumberKey = 0;
};

/// What a drive tells of the disc in it.
struct DRDeviceMediaInfo {
  /// The tracks in their order on the disc. While the disc is open the last one is the open track,
  /// in which the next session would be written; a blank disc has that one alone.
  std::vector<DRTrackReference> DRDeviceTrackRefsKey;
  std::map<DRTrackReference, DRTrackInfo> DRDeviceTrackInfoKey;
  /// Complete sessions on the disc.
  uint32_t DRDeviceMediaSessionCountKey = 0;
  /// Blocks that can still be written; absent where the drive cannot say.
  std::optional<int64_t> DRDeviceMediaBlocksFreeKey;
};

/// The state of a drive. The media information is absent while no readable disc is in the drive,
/// and while the drive does not say what is on it.
struct DRDeviceStatus {
  std::optional<DRDeviceMediaInfo> DRDeviceMediaInfoKey;
};

/// The block at which the last complete session begins. Empty where there is none.
std::optional<int64_t> lastSessionStart(const DRDeviceStatus& status);

}  // namespace kelvane
