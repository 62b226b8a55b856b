// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <string>

namespace kelvane {

/// Moves the overlay directory of an unmounted volume to where no clean-up finds it, for the user
/// to take the changes from: its name gets ".kept" added, and a number where that is taken. The
/// hide list goes with it, its name being that of the directory with ".hide" added; the empty
/// files that stand for deleted items are taken out of the directory.
///
/// Gives the directory's path, which is `overlayDirectory` where it could not be moved; empty where
/// no own directory stands there.
std::string keepChanges(const std::string& overlayDirectory);

}  // namespace kelvane
