// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "ui/burn_summary.h"

namespace kelvane {

/// What a batch run is asked to do.
struct BatchOptions {
  std::vector<std::string> drives;   ///< Nodes of drives, or folders of emulated discs.
  std::optional<std::string> name;   ///< The new session's volume name; absent: the disc's own.
  int32_t speedTag = 0;              ///< As the speed pop-up's tags: 0 the fastest.
  bool discard = false;              ///< Throw the changes away instead of burning them.
  bool json = false;                 ///< One JSON object on standard output at the end.
  std::vector<std::string> command;  ///< The program to run on the volume, with its arguments.
};

/// The exit statuses of batch mode that are its own.
enum class BatchExit {
  Burned = 0,  ///< Or there was nothing to burn.
  Usage = 2,
  NotOpened = 3,
  BurnFailed = 4,  ///< Or the disc was gone before.
};

/// How a batch run ended.
struct BatchOutcome {
  /// "burned", "unchanged", "discarded", "command-failed", "interrupted", "not-opened",
  /// "burn-failed", "disc-gone".
  std::string state;
  /// The number of the session that was burned, from 1; absent for a DVD, which mostly has one that
  /// grows.
  std::optional<uint32_t> session;
  std::optional<uint64_t> bytes;  ///< The size of that session's image; absent for a DVD.
  std::string error;              ///< Why it failed; empty where it did not.
  /// What makes a burn doubtful that counts as a success; empty where nothing does.
  std::string warning;
  std::optional<BurnSummary> summary;  ///< What was to be burned; absent where nothing was.
  int exitStatus = 0;
};

}  // namespace kelvane
