// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <cstdint>
#include <string>

namespace kelvane {

class DRBurn;
class DRTrack;
struct DRDeviceMediaInfo;

/// Where a track's data comes from.
///
/// The recorder is a process of its own, so that a recording survives the application. It makes a
/// producer itself from `sourcePath` and calls the three operations there: prepare once, produce
/// until the track is full, clean up once. There the arguments that stand for the application's own
/// objects are null; a producer must not need them.
class DRTrackProducer {
 public:
  virtual ~DRTrackProducer() = default;

  /// The file that holds the data, absolute.
  virtual std::string sourcePath() const = 0;

  /// Gets ready to deliver the track from its beginning.
  virtual bool prepareTrack(DRTrack* track, DRBurn* forBurn, const DRDeviceMediaInfo* toMedia) = 0;

  /// Puts the next bytes of the track into `intoBuffer`, at most `length`, and returns how many.
  /// Data is delivered in order; address, block size and flags are information only.
  virtual uint32_t produceDataForTrack(DRTrack* track, char* intoBuffer, uint32_t length,
                                       uint64_t atAddress, uint32_t blockSize,
                                       uint32_t* ioFlags) = 0;

  virtual void cleanupTrackAfterBurn(DRTrack* track) = 0;
};

}  // namespace kelvane
