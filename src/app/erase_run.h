// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "app/windowless_outlets.h"

class QSocketNotifier;

namespace kelvane {

class KVController;

/// The exit statuses of `kelvanefs erase`.
enum class EraseExit {
  Erased = 0,
  Declined = 1,  ///< The user was asked, and did not say yes.
  Usage = 2,
  NotErasable = 3,  ///< No disc, not a rewritable one, or one that is in use.
  Failed = 4,
};

/// How a run of `kelvanefs erase` ended.
struct EraseOutcome {
  /// "erased", "declined", "not-erasable", "erase-failed", "interrupted".
  std::string state = "erase-failed";
  std::string error;  ///< Why nothing was erased, or not all; empty where the disc is blank.
  int exitStatus = static_cast<int>(EraseExit::Failed);
};

/// The controller's window while a disc is erased from a terminal: it asks there what a user would
/// be asked, and says on standard error what goes on.
///
/// The road: wait for the disc to be listed → ask → erase → the end, at which the event loop is
/// asked to quit. Main thread only.
class EraseRun final : public WindowlessOutlets {
 public:
  enum class Confirmation { Asked, Given };

  explicit EraseRun(Confirmation confirmation);
  ~EraseRun() override;

  /// `controller` is borrowed. Called before the event loop turns.
  void start(KVController& controller);

  /// A signal asks to end. An erase that has begun is waited for, since it cannot be stopped.
  void interrupt(int signalNumber);

  /// Once the event loop has ended.
  const EraseOutcome& outcome() const { return outcome_; }

  // What the controller says to its window.
  void beginAlertSheet(const Alert& alert, std::function<void(int returnCode)> didEnd) override;
  DREraseProgressPanel& eraseProgressPanel() override;
  void beep() override;
  void terminate() override;

 private:
  enum class Stage { Looking, Asking, Erasing, Ended };
  class Panel;

  void lookAtRecords();
  bool listUnreadableDisc();
  void ask();
  void readAnswer();
  void answer(bool yes);
  /// Says why there is no blank disc, and ends.
  void giveUp(EraseExit status, const std::string& reason);
  void end(EraseExit status);

  const Confirmation confirmation_;
  KVController* controller_ = nullptr;
  Stage stage_ = Stage::Looking;
  EraseOutcome outcome_;
  std::function<void(int)> answerAlert_;
  std::unique_ptr<QSocketNotifier> terminal_;
  std::string answer_;
  std::optional<DeviceRecord> asked_;  ///< The disc that the question is about.
  std::unique_ptr<Panel> panel_;
};

}  // namespace kelvane
