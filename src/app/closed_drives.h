// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <functional>
#include <set>
#include <string>
#include <vector>

#include "ui/window_outlets.h"

namespace kelvane {

class DRDevice;

/// Tells the user of drives in this machine that the user may not write with: their discs would be
/// missing from the list without a word, or fail only at the burn. Looks whenever a drive has
/// changed, and tells of each drive once, until it can be used or has been unplugged. Main thread
/// only.
class ClosedDrives {
 public:
  using Devices = std::function<std::vector<DRDevice*>()>;
  /// Why a drive may not be used; empty where it may.
  using Reason = std::function<std::string(const DRDevice& device)>;

  /// `window` is borrowed. The drives and their reasons are the real ones unless given.
  explicit ClosedDrives(WindowOutlets& window, Devices devices = {}, Reason reason = {});
  ~ClosedDrives();
  ClosedDrives(const ClosedDrives&) = delete;
  ClosedDrives& operator=(const ClosedDrives&) = delete;

 private:
  void look();

  WindowOutlets& window_;
  Devices devices_;
  Reason reason_;
  std::set<std::string> known_;  ///< By the kernel's names.
};

}  // namespace kelvane
