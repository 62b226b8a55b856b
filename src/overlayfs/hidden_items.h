// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <optional>
#include <stop_token>
#include <string>
#include <vector>

#include "overlayfs/overlay_changes.h"

namespace kelvane {

/// An item that a pattern of the hide list hides although nobody deleted it.
struct HiddenItem {
  std::string path;  ///< On the volume.
  bool isFolder = false;

  friend bool operator==(const HiddenItem&, const HiddenItem&) = default;
};

/// What the patterns of the hide list do besides what they are for. Both are sorted by path.
struct HideEffects {
  /// Items that the session would lack although nobody deleted them. Of a folder that is hidden,
  /// all goes that is in it, on the disc and in the overlay; the folder alone is named then.
  std::vector<HiddenItem> hiddenToo;
  /// Deleted items, by their paths on the volume, of which the placeholders are not hidden: the
  /// session shows an empty file for each.
  std::vector<std::string> shownStill;
};

/// Holds the patterns of the hide list against the session built from an overlay directory.
///
/// mkisofs compares each pattern of the hide list with the whole path and with the name of every
/// item that it finds in the overlay directory, by fnmatch(3) with FNM_PATHNAME: "*" and "?" match
/// no slash, a leading dot is nothing special, and "\" takes the next character as it is. What
/// counts as one character is up to the locale of its environment, which is ours. Items that only
/// the disc has are not compared. A name with a line feed makes a pattern of each of its lines.
///
/// Any thread; empty where `stop` was requested.
std::optional<HideEffects> effectsOfHiding(const std::string& overlay,
                                           const std::string& hideListFile,
                                           const OverlayChanges& changes,
                                           const std::stop_token& stop);

}  // namespace kelvane
