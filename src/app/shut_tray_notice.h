// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

namespace kelvane {

class KVController;
class WindowOutlets;

/// Tells the user who has pressed the button of the drive whose disc is open why the tray stays
/// shut, once at a time. Main thread only.
class ShutTrayNotice {
 public:
  /// Borrows both.
  ShutTrayNotice(const KVController& controller, WindowOutlets& window);
  ~ShutTrayNotice();
  ShutTrayNotice(const ShutTrayNotice&) = delete;
  ShutTrayNotice& operator=(const ShutTrayNotice&) = delete;

 private:
  void tell(const void* device);

  const KVController& controller_;
  WindowOutlets& window_;
  bool isTold_ = false;
};

}  // namespace kelvane
