// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <cstdint>
#include <optional>
#include <stop_token>
#include <string>

#include "overlayfs/overlay_changes.h"

namespace kelvane {

/// Files (symbolic links and whatever is no folder among them) and folders.
struct ItemCount {
  uint64_t files = 0;
  uint64_t folders = 0;

  bool isZero() const { return files == 0 && folders == 0; }
  friend bool operator==(const ItemCount&, const ItemCount&) = default;
};

/// What a new session changes, as a user sees it. Every item counts once.
struct ChangeCount {
  ItemCount added;
  /// What takes the place of a disc item of the same path.
  ItemCount replaced;
  /// Disc items that are found under another path and are otherwise what they were. A moved item
  /// whose content has been changed counts as deleted and added, and so does one in whose old or
  /// new place something else stands.
  ItemCount renamed;
  /// Disc items that are gone, with all that is in a deleted folder.
  ItemCount deleted;
  /// The content of all files that go into the session.
  uint64_t newBytes = 0;
  /// What that content takes in blocks of 2048 bytes, each file by itself.
  uint64_t contentBlocks = 0;
  /// The folders of the session that the overlay names.
  uint64_t folders = 0;

  friend bool operator==(const ChangeCount&, const ChangeCount&) = default;
};

/// Files that a desktop has put beside others (names that begin with "._").
enum class AppleDouble { Burned, LeftOut };

/// Counts what is changed by an overlay directory after its volume's unmount. `disc` is the hidden
/// mount of the disc, absent for a blank one. Reads both trees, which may take its time: on any
/// thread but the main one. Empty where `stop` was requested. What cannot be read is left out.
std::optional<ChangeCount> countChanges(const std::string& overlay,
                                        const std::optional<std::string>& disc,
                                        const OverlayChanges& changes, AppleDouble appleDouble,
                                        const std::stop_token& stop);

}  // namespace kelvane
