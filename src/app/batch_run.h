// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "app/batch_options.h"
#include "app/windowless_outlets.h"
#include "platform/foundation/notification_center.h"

namespace kelvane {

class ChildTask;
class KVController;

/// The controller's window in batch mode: it answers what a user would be asked, runs the command
/// on the volume, and says on standard error, one line a stage, what goes on.
///
/// The road: wait for the disc to be listed and opened → run the command → close the volume →
/// tell what will change → confirm or cancel the burn → wait for the clean-up. It ends with the
/// outcome, and the event loop is asked to quit. Main thread only.
class BatchRun final : public WindowlessOutlets {
 public:
  explicit BatchRun(BatchOptions options);
  ~BatchRun() override;

  /// `controller` is borrowed. Called before the event loop turns.
  void start(KVController& controller);

  /// A signal asks to end. Before the burn the changes are discarded; a burn is waited for.
  void interrupt(int signalNumber);

  const BatchOutcome& outcome() const { return outcome_; }

  // What the controller says to its window.
  void setFrame(ContentView view, Rect frame, Movement movement) override;
  bool showsSizeInformation() const override { return false; }
  void setBurnMessage(const std::string& text) override;
  int32_t burnSpeedTag() override { return options_.speedTag; }
  void beginBurnConfirmationSheet() override;
  bool showsBurnSummary() const override { return !discards(); }
  void setBurnSummary(const BurnSummary& summary) override;
  void beginAlertSheet(const Alert& alert, std::function<void(int returnCode)> didEnd) override;
  void discHasGone() override;
  void terminate() override;
  void replyToApplicationShouldTerminate(bool shouldTerminate) override;

 private:
  enum class Stage { Opening, Running, Closing, Confirming, Burning, Ended };

  void setDoubleValue(double value) override;

  void lookAtRecords();
  void volumeIsMounted();
  void runCommand();
  void commandHasEnded();
  void closeVolume();
  void volumeStays(const std::string& reason);
  void discIsLoading();
  void mountFailed(const std::string& reason);
  void burnStatusChanged(const Notification& notification);
  void notOpened(const std::string& reason);
  void answerBurnQuestion();
  void confirmBurn();
  void discardChanges();
  void end();
  bool discards() const;

  const BatchOptions options_;
  KVController* controller_ = nullptr;
  Stage stage_ = Stage::Opening;
  BatchOutcome outcome_;
  std::unique_ptr<ChildTask> command_;
  bool commandFailed_ = false;
  bool announcedLoading_ = false;
  bool questionWaits_ = false;  // Whether to burn, for the command's end.
  bool endWaits_ = false;       // All else has ended; the command has not.
  std::optional<int> interruptedBy_;
  bool discHasGone_ = false;
  std::optional<uint32_t> sessionsBefore_;
  std::string announcedReason_;
  int announcedTenths_ = 0;
  std::optional<double> writingBeginsAt_;  // Of the bar; empty until the disc is written.
};

}  // namespace kelvane
