// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <string>
#include <vector>

#include "overlayfs/moved_items.h"

namespace kelvane {

/// What the user has changed on a volume, beside what its overlay directory shows.
struct OverlayChanges {
  /// The disc paths that were deleted; a path may stand there more than once.
  std::vector<std::string> deleted;
  MovedItems moved;
};

}  // namespace kelvane
