// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "app/kv_controller.h"

namespace kelvane {

/// What the application answers when it is asked to quit.
enum class TerminateReply {
  Cancel = 0,  ///< It keeps running.
  Now = 1,
  Later = 2,  ///< The answer follows through WindowOutlets::replyToApplicationShouldTerminate.
};

/// Starts the controller once launching has finished, and decides whether the application may quit.
/// Main thread only.
class KVAppDelegate {
 public:
  /// Both are borrowed.
  KVAppDelegate(KVController& thecontroller, WindowOutlets& mainWindow);

  void applicationDidFinishLaunching();
  /// The user asks for the application again: brings the window back, once the controller allows
  /// it. Always false: no untitled document is ever opened.
  bool applicationShouldOpenUntitledFile();
  TerminateReply applicationShouldTerminate();

 private:
  KVController& thecontroller_;
  WindowOutlets& mainWindow_;
};

}  // namespace kelvane
