// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <atomic>
#include <stop_token>
#include <thread>

#include "app/kv_controller.h"
#include "services/update_source.h"

namespace kelvane {

/// What the application answers when it is asked to quit.
enum class TerminateReply {
  Cancel = 0,  ///< It keeps running.
  Now = 1,
  Later = 2,  ///< The answer follows through WindowOutlets::replyToApplicationShouldTerminate.
};

/// Starts the update check and the controller once launching has finished, and decides whether the
/// application may quit. Main thread only, but for the update check.
class KVAppDelegate {
 public:
  /// Controller and window are borrowed. Without an endpoint in `updates` no update check is made.
  KVAppDelegate(KVController& thecontroller, WindowOutlets& mainWindow, UpdateSource updates = {});

  void applicationDidFinishLaunching();
  /// The user asks for the application again: brings the window back, once the controller allows
  /// it. Always false: no untitled document is ever opened.
  bool applicationShouldOpenUntitledFile();
  TerminateReply applicationShouldTerminate();

  /// Asks the endpoint for the newest version's build number. Where that is newer than this build,
  /// shows the dialog and waits until it is over. Silent about whatever goes wrong. On a thread of
  /// its own, which is given up when `stop` is requested.
  void performUpdateCheck(const std::stop_token& stop);
  /// Whether no update check is under way, its dialog included. From any thread.
  bool updateCheckHasEnded() const { return !updateCheckRuns_; }
  /// Tells of a newer version and opens the product page where the user wants it.
  void displayUpdateCheckDialog();

 private:
  KVController& thecontroller_;
  WindowOutlets& mainWindow_;
  const UpdateSource updates_;
  std::atomic<bool> updateCheckRuns_ = false;
  std::jthread updateCheck_;  // The last member: it uses the others until it has ended.
};

}  // namespace kelvane
