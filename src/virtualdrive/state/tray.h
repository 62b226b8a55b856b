// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "virtualdrive/state/drive_state.h"

namespace kelvane::virtualdrive {

/// Closes the tray, and has the change told. False where it was closed.
inline bool loadTray(DriveState& drive) {
  if (!drive.trayOpen) return false;
  drive.trayOpen = false;
  drive.unitAttention = true;
  drive.mediaEvent = MediaEvent::NewMedia;
  return true;
}

/// Opens the tray, and has the change told. False where it was open. Whether it is locked is the
/// caller's matter.
inline bool openTray(DriveState& drive) {
  if (drive.trayOpen) return false;
  drive.trayOpen = true;
  drive.removalPrevented = false;
  drive.unitAttention = false;
  drive.mediaEvent = MediaEvent::MediaRemoval;
  return true;
}

}  // namespace kelvane::virtualdrive
