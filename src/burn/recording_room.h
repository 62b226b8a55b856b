// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <cstdint>
#include <optional>

namespace kelvane {

class DRDevice;

/// The room for the next session on a disc, in blocks of 2048 bytes.
struct RecordingRoom {
  /// What can be written from the next writable address on, as the drive tells it; empty where it
  /// does not.
  std::optional<int64_t> freeBlocks;
  /// The fewest blocks that a session is recorded with, and what their number is a multiple of.
  int64_t leastBlocks = 0;
  int64_t granule = 1;
  /// What lies between the end of the session and the place where a further one can begin.
  int64_t blocksBehind = 0;
  /// From the beginning of the session to the last block at which one may begin at all; negative
  /// where this one cannot.
  int64_t blocksToLastBeginning = INT64_MAX;

  /// The blocks in which a session of that many is recorded.
  int64_t blocksFor(int64_t sessionBlocks) const;
  /// Of the free blocks, those that a further session could have afterwards; empty where it is not
  /// known what is free. Negative by as many blocks as are missing where the session does not fit.
  std::optional<int64_t> leftAfter(int64_t sessionBlocks) const;
};

/// Of a CD, and of whatever else is recorded as one. Asks the drive; any thread.
RecordingRoom roomOnCD(const DRDevice& device);

/// Of a DVD of which the first `usedBlocks` blocks hold its volume (0 for a first session). One
/// that is written session after session tells its room itself, as a CD does; of media that are
/// written over at will it is all that lies behind the volume. Asks the drive; any thread.
RecordingRoom roomOnDVD(const DRDevice& device, int64_t usedBlocks);

/// The block at which growisofs begins a further session behind a volume of that many blocks, on
/// media that are written over at will.
int64_t nextSessionOnDVD(int64_t usedBlocks);

}  // namespace kelvane
