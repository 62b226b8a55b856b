// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <functional>

#include "ui/window_outlets.h"

class QDialog;
class QWidget;

namespace kelvane {

/// Opens `alert` as a sheet over `parent` and returns it. `didEnd`, where given, hears which button
/// ended it, counted from `kAlertFirstButtonReturn`, after the sheet has gone.
///
/// The sheet deletes itself once it has ended. Whoever takes it away before disconnects it from
/// `parent`, so that `didEnd` hears nothing, and deletes it.
///
/// Escape and closing the sheet count as the last button, which by convention is the one that
/// changes nothing. Return counts as the last one too where a warning leaves a choice, else as the
/// first.
QDialog* openAlertSheet(QWidget* parent, const Alert& alert,
                        std::function<void(int returnCode)> didEnd);

/// Shows `alert` before all windows of the application, over `parent` where there is one, and gives
/// the button that ended it, counted in the same way. Where the application quits meanwhile, it is
/// the last one.
int runAlertModal(QWidget* parent, const Alert& alert);

}  // namespace kelvane
