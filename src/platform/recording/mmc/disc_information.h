// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "platform/recording/mmc_transport.h"

namespace kelvane::mmc {

/// How far a disc has been written.
enum class DiscStatus : uint8_t {
  Blank = 0,
  Appendable = 1,  ///< "Incomplete": a further session can be written.
  Complete = 2,    ///< Closed for good.
  Other = 3,       ///< Media that are overwritten at will.
};

/// The last session on the disc, or the one that would come next.
enum class LastSessionState : uint8_t { Empty = 0, Incomplete = 1, Damaged = 2, Complete = 3 };

/// What a drive knows of its disc as a whole.
struct DiscInformation {
  DiscStatus status = DiscStatus::Complete;
  LastSessionState lastSession = LastSessionState::Complete;
  bool erasable = false;
  uint16_t firstTrack = 1;
  uint16_t sessions = 0;  ///< With the open one.
  uint16_t firstTrackInLastSession = 1;
  /// While the disc is open this is the open ("invisible") track.
  uint16_t lastTrackInLastSession = 1;

  bool isOpen() const { return status == DiscStatus::Blank || status == DiscStatus::Appendable; }
  /// Whether a session can be written that begins at its own beginning: the disc is open, and no
  /// session was left unfinished, in which everything further would be recorded.
  bool canTakeSession() const { return isOpen() && lastSession == LastSessionState::Empty; }
  /// Sessions that are finished.
  uint16_t completeSessions() const;
};

/// Reads a reply to READ DISC INFORMATION. Empty where it is too short to hold the track numbers.
/// (MMC-5, 6.22.3.1)
std::optional<DiscInformation> parseDiscInformation(std::span<const uint8_t> reply);

/// READ DISC INFORMATION, the standard one. Empty without a disc. (MMC-5, 6.22)
std::optional<DiscInformation> readDiscInformation(Transport& transport);

}  // namespace kelvane::mmc
