// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <chrono>
#include <functional>
#include <memory>
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
  /// The controller is about to observe the drives: whoever is to hear of them before it does so
  /// from now on. Until then nobody asks a drive or mounts a disc, since the user has not agreed to
  /// the licence yet, or what is needed for opening discs is missing. Main thread.
  std::function<void()> drivesWillBeObserved = [] {};
  /// The discs are about to be looked at: those that nobody mounts but this application are mounted
  /// now. The scan waits for a volume on the main thread, where it could not be mounted meanwhile.
  std::function<void()> discsWillBeScanned = [] {};
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
  /// Asks the desktop neither to sleep nor to log out until what is given is deleted. `why` is for
  /// the user. Main thread.
  std::function<std::shared_ptr<void>(const std::string& why)> holdOffInterruptions;
  /// Any thread.
  std::function<void(std::chrono::milliseconds)> sleep;
};

class VisibleMounts;

/// The real services; `visibleMounts` is borrowed.
ControllerServices systemControllerServices(VisibleMounts& visibleMounts);

}  // namespace kelvane
