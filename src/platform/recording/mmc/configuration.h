// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "platform/recording/mmc_transport.h"

namespace kelvane::mmc {

/// Kinds of discs, as drives number them (MMC-5, 5.3.1).
enum class Profile : uint16_t {
  None = 0x0000,
  CdRom = 0x0008,
  CdR = 0x0009,
  CdRw = 0x000A,
  DvdRom = 0x0010,
  DvdR = 0x0011,
  DvdRam = 0x0012,
  DvdRwRestrictedOverwrite = 0x0013,
  DvdRwSequential = 0x0014,
  DvdRDualLayerSequential = 0x0015,
  DvdRDualLayerJump = 0x0016,
  DvdPlusRw = 0x001A,
  DvdPlusR = 0x001B,
  DvdPlusRDoubleLayer = 0x002B,
  BdRom = 0x0040,
  BdRSequential = 0x0041,
  BdRRandom = 0x0042,
  BdRe = 0x0043,
};

/// One thing a drive can do, and whether it can do it with the disc in it.
struct Feature {
  uint16_t code = 0;
  bool current = false;
};

/// What a drive can do, and what its disc is.
struct Configuration {
  Profile currentProfile = Profile::None;
  std::vector<Profile> profiles;  ///< Every kind of disc the drive knows, whatever is in it.
  std::vector<Feature> features;

  bool supports(Profile profile) const;
  bool hasCurrent(uint16_t featureCode) const;
};

/// Reads a reply to GET CONFIGURATION. A reply that is cut off gives what stands before the cut;
/// one too short for its header gives nothing. (MMC-5, 6.6.3)
std::optional<Configuration> parseConfiguration(std::span<const uint8_t> reply);

/// GET CONFIGURATION for all features. (MMC-5, 6.6)
std::optional<Configuration> readConfiguration(Transport& transport);

}  // namespace kelvane::mmc
