// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/recording/dr_device_status.h"
#include "platform/recording/mmc/configuration.h"

namespace kelvane {

/// What is in a drive at one moment, as far as it tells one state from another.
struct MediaState {
  bool present = false;
  bool transitioning = false;  ///< The drive becomes ready; `present` or not.
  bool blank = false;
  bool appendable = false;
  mmc::Profile profile = mmc::Profile::None;
  uint32_t sessions = 0;   ///< With the open one.
  uint32_t lastTrack = 0;  ///< The open track, while the disc is open.
  /// Where the next session would begin; absent without an open track.
  std::optional<int64_t> nextWritableAddress;

  friend bool operator==(const MediaState&, const MediaState&) = default;
};

/// Asks a drive for its state. A drive that does not answer has no disc, nor has one that does not
/// know its disc yet; that is `transitioning`.
MediaState readMediaState(mmc::Transport& transport);

/// Asks a drive for the tracks on its disc. Left out are those of last sessions that hold no
/// volume, where an earlier one does: a recording broke off there.
DRDeviceStatus readDeviceStatus(mmc::Transport& transport);

/// The constant DRDeviceMediaType… of a profile; empty for none or one not known.
std::optional<std::string> mediaTypeOf(mmc::Profile profile);

}  // namespace kelvane
