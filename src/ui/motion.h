// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

class QWidget;

namespace kelvane {

/// Notes what the desktop's settings say, where they say something.
void setLessMotionIsWanted(bool lessMotion);

/// Whether the desktop asks its programs to do without animations that only please, as its settings
/// for accessibility or its style say. What would have moved is then where it belongs at once.
bool prefersLessMotion(const QWidget& widget);

}  // namespace kelvane
