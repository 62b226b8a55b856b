// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <optional>
#include <string>

namespace kelvane {

/// The states of a burn, in the order in which a successful one passes them.
inline constexpr char DRStatusStateNone[] = "DRStatusStateNone";
inline constexpr char DRStatusStatePreparing[] = "DRStatusStatePreparing";
inline constexpr char DRStatusStateTrackWrite[] = "DRStatusStateTrackWrite";
inline constexpr char DRStatusStateSessionClose[] = "DRStatusStateSessionClose";
inline constexpr char DRStatusStateFinishing[] = "DRStatusStateFinishing";
inline constexpr char DRStatusStateDone[] = "DRStatusStateDone";
/// Instead of DRStatusStateDone, after any of the others.
inline constexpr char DRStatusStateFailed[] = "DRStatusStateFailed";

/// Why a burn failed.
struct DRErrorStatus {
  /// A sentence for the log, with the drive's own words where it gave any.
  std::string DRErrorStatusErrorStringKey;
};

/// How far a burn is.
struct DRBurnStatus {
  std::string DRStatusStateKey = DRStatusStateNone;
  /// 0.0 to 1.0; absent or 0 while it cannot be told.
  std::optional<double> DRStatusPercentCompleteKey;
  /// Present exactly in the state DRStatusStateFailed.
  std::optional<DRErrorStatus> DRErrorStatusKey;
};

}  // namespace kelvane
