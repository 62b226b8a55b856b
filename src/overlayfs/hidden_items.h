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

/// The items that the session built from an overlay directory would lack although they were not
/// deleted, sorted by path. Of a folder that is hidden, all goes that is in it, on the disc and in
/// the overlay; the folder alone is named then.
///
/// mkisofs compares each pattern of the hide list with the whole path and with the name of every
/// item that it finds in the overlay directory, by fnmatch(3) with FNM_PATHNAME: "*" and "?" match
/// no slash, a leading dot is nothing special, and "\" takes the next character as it is. What
/// counts as one character is up to the locale of its environment, which is ours. Items that only
/// the disc has are not compared. A name with a line feed makes a pattern of each of its lines.
///
/// Any thread; empty where `stop` was requested.
std::optional<std::vector<HiddenItem>> itemsHiddenBesides(const std::string& overlay,
                                                          const std::string& hideListFile,
                                                          const OverlayChanges& changes,
                                                          const std::stop_token& stop);

}  // namespace kelvane
