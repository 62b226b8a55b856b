// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "virtualdrive/commands/command.h"
#include "virtualdrive/faults/fault_progress.h"
#include "virtualdrive/faults/fault_script.h"

namespace kelvane::virtualdrive {

/// Lets happen what the fault script of a disc's folder says (see FaultScript). Lives for one
/// command, under the folder's lock, and does nothing where there is no script.
class FaultInjector {
 public:
  /// A script that is not understood counts as none; who opens the drive is told (see `problem`).
  explicit FaultInjector(DiscFolder& folder);

  /// The answer instead of the command's, where there is one. May turn what the folder tells of the
  /// disc into what was loaded, for a command that only asks.
  std::optional<CommandResult> before(Command& command);
  void after(Command& command);
  /// To be called when the tray may have moved.
  void noteTray(bool wasOpen);
  /// Stores what was counted. False where that cannot be written.
  bool store();

  /// How long the data of a command takes in real time.
  std::chrono::nanoseconds timeFor(const Command& command, const CommandResult& result) const;

  bool refusesExclusiveAccess() const { return script_ && script_->refusesExclusiveAccess; }

  /// What is wrong with the script in `folder`, as a sentence; empty where nothing is.
  static std::string problem(const std::filesystem::path& folder);

 private:
  bool counts(const Command& command, FaultTrigger::Moment moment, std::size_t index);
  bool isBecomingReady(const Command& command) const;
  void showAsLoaded(const Command& command);
  CommandResult pullTheCable();

  DiscFolder& folder_;
  std::string text_;
  std::optional<FaultScript> script_;
  FaultProgress progress_;
  FaultProgress stored_;
};

}  // namespace kelvane::virtualdrive
