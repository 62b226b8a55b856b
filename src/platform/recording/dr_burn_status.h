// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <optional>
#include <string>
#include <utility>

namespace kelvane {

/// The states of a burn or an erase, in the order in which a successful one passes them. Only a
/// burn has DRStatusStateTrackWrite and DRStatusStateSessionClose, only an erase
/// DRStatusStateErasing.
inline constexpr char DRStatusStateNone[] = "DRStatusStateNone";
inline constexpr char DRStatusStatePreparing[] = "DRStatusStatePreparing";
inline constexpr char DRStatusStateTrackWrite[] = "DRStatusStateTrackWrite";
inline constexpr char DRStatusStateSessionClose[] = "DRStatusStateSessionClose";
inline constexpr char DRStatusStateErasing[] = "DRStatusStateErasing";
inline constexpr char DRStatusStateFinishing[] = "DRStatusStateFinishing";
inline constexpr char DRStatusStateDone[] = "DRStatusStateDone";
/// Instead of DRStatusStateDone, after any of the others.
inline constexpr char DRStatusStateFailed[] = "DRStatusStateFailed";

/// Why a burn or an erase failed.
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

/// How far an erase is; the same members.
using DREraseStatus = DRBurnStatus;

/// Whether this is the last status of a burn or an erase.
inline bool isFinal(const DRBurnStatus& status) {
  return status.DRStatusStateKey == DRStatusStateDone ||
         status.DRStatusStateKey == DRStatusStateFailed;
}

/// The status of a burn or an erase that failed; `why` is a sentence for the log.
inline DRBurnStatus failedStatus(std::string why) {
  DRBurnStatus status;
  status.DRStatusStateKey = DRStatusStateFailed;
  status.DRErrorStatusKey = DRErrorStatus{std::move(why)};
  return status;
}

}  // namespace kelvane
