// SPDX-License-Identifier: GPL-2.0-or-later
#include "burn/burn_properties.h"

namespace kelvane {

std::optional<float> requestedSpeedForTag(int tag) {
  constexpr float kSingleSpeed = 176.4F;
  constexpr float kDoubleSpeed = 352.8F;
  if (tag == 1) return kSingleSpeed;
  if (tag == 2) return kDoubleSpeed;
  return std::nullopt;
}

DRBurnProperties cdBurnProperties(int speedTag) {
  DRBurnProperties properties;
  properties.DRBurnCompletionActionKey = DRBurnCompletionActionMount;
  properties.DRBurnUnderrunProtectionKey = 1;
  properties.DRBurnRequestedSpeedKey = requestedSpeedForTag(speedTag);
  return properties;
}

// Blocks of 2048 bytes, data form 16, block type 8, track mode 4 and session format 0 are a Mode 1
// data track in a CD-ROM session.
DRTrackProperties imageTrackProperties(DRMSF length) {
  DRTrackProperties properties;
  properties.DRTrackLengthKey = length;
  properties.DRBlockSizeKey = 2048;
  properties.DRDataFormKey = 16;
  properties.DRBlockTypeKey = 8;
  properties.DRTrackModeKey = 4;
  properties.DRSessionFormatKey = 0;
  properties.DRVerificationTypeKey = DRVerificationTypeProduceAgain;
  properties.DRISORockRidgeExtensions = 1;
  properties.DRISOLevel = 2;
  return properties;
}

}  // namespace kelvane
