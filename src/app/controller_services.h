// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "platform/volumes/volume_services.h"

namespace kelvane {

class DRDevice;

/// What the controller needs of the platform beside the window. `systemControllerServices` gives
/// the real ones; tests put their own in place of some.
struct ControllerServices {
  /// Every drive, in the order in which they are listed. Main thread.
  std::function<std::vector<DRDevice*>()> devices;
  /// Mount table, mounting and unmounting. Borrowed.
  VolumeServices* volumes = nullptr;
  /// Whether a user-space file system could be mounted; `reason` takes what is missing.
  std::function<bool(std::string* reason)> userFileSystemIsAvailable;
  /// The disc of this drive is being opened: nobody is to mount it visibly until `discIsClosed`.
  /// Main thread.
  std::function<void(const std::string& bsdName)> discIsOpened;
  std::function<void(const std::string& bsdName)> discIsClosed;
  /// The disc is about to be ejected: whatever is mounted from it goes. Main thread.
  std::function<void(const std::string& bsdName)> discWillBeEjected;
  /// Any thread.
  std::function<void(std::chrono::milliseconds)> sleep;
};

class VisibleMounts;

/// The real services; `visibleMounts` is borrowed.
ControllerServices systemControllerServices(VisibleMounts& visibleMounts);

}  // namespace kelvane
