// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

namespace kelvane {

/// Makes the main window a window to screen readers, too, where it would be a mere container of
/// other things. Called before the window is made; without effect from the second time on.
void installWindowAccessibility();

}  // namespace kelvane
