// SPDX-License-Identifier: GPL-2.0-or-later
#include "burn/recording_room.h"

#include <algorithm>

#include "platform/recording/dr_device.h"

namespace kelvane {
namespace {

// A CD track lasts four seconds at least, and two blocks run out behind it.
constexpr int64_t kLeastCDTrack = 300;
constexpr int64_t kRunOut = 2;
// Lead-out and lead-in between two sessions; the first lead-out is longer (MMC-5, 4.2.3.5).
constexpr int64_t kBehindFirstSession = 11400;
constexpr int64_t kBehindFurtherSession = 6900;
// An error correction block of a DVD; and what the border between two of its sessions takes at
// least.
constexpr int64_t kDVDGranule = 16;
constexpr int64_t kDVDBorder = 16384;
// The last block at which growisofs begins a further session: 40 MB before 4 GB.
constexpr int64_t kLastBeginningOnDVD = 0x200000 - 0x5000;

int64_t inWhole(int64_t granule, int64_t blocks) {
  return (blocks + granule - 1) / granule * granule;
}

}  // namespace

int64_t RecordingRoom::blocksFor(int64_t sessionBlocks) const {
  return inWhole(granule, std::max(sessionBlocks, leastBlocks));
}

std::optional<int64_t> RecordingRoom::leftAfter(int64_t sessionBlocks) const {
  if (!freeBlocks) return std::nullopt;
  const int64_t left = *freeBlocks - blocksFor(sessionBlocks);
  if (left >= 0 && blocksFor(sessionBlocks) > blocksToLastBeginning) return 0;
  return left < 0 ? left : std::max<int64_t>(left - blocksBehind, 0);
}

RecordingRoom roomOnCD(const DRDevice& device) {
  RecordingRoom room;
  room.leastBlocks = kLeastCDTrack;
  const std::optional<DRDeviceMediaInfo> media = device.status().DRDeviceMediaInfoKey;
  if (!media) return room;
  room.freeBlocks = media->DRDeviceMediaBlocksFreeKey;
  const bool isFirst = media->DRDeviceMediaSessionCountKey == 0;
  room.blocksBehind = kRunOut + (isFirst ? kBehindFirstSession : kBehindFurtherSession);
  return room;
}

RecordingRoom roomOnDVD(const DRDevice& device, int64_t usedBlocks) {
  RecordingRoom room;
  room.granule = kDVDGranule;
  const std::optional<DRDeviceMediaInfo> media = device.status().DRDeviceMediaInfoKey;
  if (usedBlocks > 0 && media && media->DRDeviceMediaBlocksFreeKey) {
    room.freeBlocks = media->DRDeviceMediaBlocksFreeKey;
    room.blocksBehind = kDVDBorder;
    return room;
  }
  const int64_t beginning = nextSessionOnDVD(usedBlocks);
  room.blocksToLastBeginning = kLastBeginningOnDVD - beginning;
  if (const std::optional<uint32_t> capacity = device.formatCapacity()) {
    room.freeBlocks = *capacity - beginning;
  }
  return room;
}

int64_t nextSessionOnDVD(int64_t usedBlocks) {
  return inWhole(kDVDGranule, usedBlocks);
}

}  // namespace kelvane
