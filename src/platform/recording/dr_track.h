// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "platform/recording/dr_msf.h"
#include "platform/recording/dr_track_producer.h"

namespace kelvane {

inline constexpr char DRVerificationTypeProduceAgain[] = "DRVerificationTypeProduceAgain";

/// What is asked of a track. The recorder writes every track as Mode 1 data in a CD-ROM session,
/// which is what the five numbers in the middle say; the last three describe the contents and
/// change nothing in the writing.
struct DRTrackProperties {
  DRMSF DRTrackLengthKey;
  uint16_t DRBlockSizeKey = 2048;
  int DRDataFormKey = 16;
  int DRBlockTypeKey = 8;
  int DRTrackModeKey = 4;
  int DRSessionFormatKey = 0;
  std::string DRVerificationTypeKey;
  std::optional<int> DRISORockRidgeExtensions;
  std::optional<int> DRISOLevel;
};

/// One track to be written, with the producer of its data, which it owns.
class DRTrack {
 public:
  explicit DRTrack(std::unique_ptr<DRTrackProducer> producer) : producer_(std::move(producer)) {}

  void setProperties(DRTrackProperties properties) { properties_ = std::move(properties); }
  const DRTrackProperties& properties() const { return properties_; }
  DRTrackProducer& producer() const { return *producer_; }

 private:
  std::unique_ptr<DRTrackProducer> producer_;
  DRTrackProperties properties_;
};

}  // namespace kelvane
