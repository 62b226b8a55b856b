// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <string>

#include "platform/userfs/gm_user_file_system.h"
#include "ui/window_outlets.h"

namespace kelvane {

/// What is said where the open volume has not been unmounted: by whom it is used, or that the
/// system refuses it. `result` is neither Started nor NotMounted. Any thread.
Alert volumeStaysAlert(UnmountResult result, const std::string& mountPoint);

/// Whether an alert is one of these. The volume is open, and closing it can be tried again.
bool isVolumeStaysAlert(const Alert& alert);

}  // namespace kelvane
