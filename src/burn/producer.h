// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>

#include "platform/recording/dr_msf.h"
#include "platform/recording/dr_track_producer.h"

namespace kelvane {

/// Streams a finished session image to the burner, in order, and from the beginning again once all
/// of it has been delivered.
///
/// Sizes and positions are 32 bits wide, which is ample for a CD: an image has to be smaller than
/// 2 GiB. Nothing here reports errors: a missing file counts as one of size 0, and bytes that can
/// not be read are delivered as zeros. What has been read is dropped from the system's cache, so
/// that a large image does not take the place of everything else there. One thread at a time.
class Producer : public DRTrackProducer {
 public:
  Producer() = default;
  ~Producer() override;
  Producer(const Producer&) = delete;
  Producer& operator=(const Producer&) = delete;

  void setFilePath(std::string path);

  /// The length of the track: the file's size in whole blocks of 2048 bytes, a remainder dropped.
  DRMSF fileSize() const;

  std::string sourcePath() const override { return filePath; }
  /// Opens the file and starts from its beginning. Always true.
  bool prepareTrack(DRTrack* track, DRBurn* forBurn, const DRDeviceMediaInfo* toMedia) override;
  /// The next bytes, at most `length`; fewer only at the end of the file, none only where it is
  /// empty. Once all has been delivered the next call starts at byte 0 again.
  uint32_t produceDataForTrack(DRTrack* track, char* intoBuffer, uint32_t length,
                               uint64_t atAddress, uint32_t blockSize, uint32_t* ioFlags) override;
  void cleanupTrackAfterBurn(DRTrack* track) override;

 private:
  void dropFromCache(off_t end);

  std::string filePath;
  uint32_t FileSize = 0;
  uint32_t FilePosition = 0;
  int file = -1;
  off_t droppedUpTo_ = 0;  // What lies before it in the file has left the cache.
};

}  // namespace kelvane
