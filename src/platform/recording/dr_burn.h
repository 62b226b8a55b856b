// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "platform/recording/dr_burn_status.h"
#include "platform/recording/dr_track.h"

namespace kelvane {

class DRDevice;
class RecorderRun;

inline constexpr char DRBurnCompletionActionMount[] = "DRBurnCompletionActionMount";

/// What is asked of a burn.
struct DRBurnProperties {
  /// What becomes of the disc afterwards. The disc stays in the drive; whoever watches the drive
  /// mounts it, so nothing is done here for DRBurnCompletionActionMount.
  std::string DRBurnCompletionActionKey = DRBurnCompletionActionMount;
  /// 1: the drive pauses the laser when the data does not arrive in time.
  int DRBurnUnderrunProtectionKey = 1;
  /// Kilobytes (1000 bytes) a second; absent: as fast as drive and disc allow.
  std::optional<float> DRBurnRequestedSpeedKey;
};

/// Writes one track to the disc of a device as a new session.
///
/// The writing itself is done by the recorder, a program of its own in a session of its own: it
/// goes on to the end whatever becomes of this object or this process. Main thread only. Each
/// change of the status posts DRBurnStatusChangedNotification (DRNotificationCenter), whose
/// `userInfo` is a DRBurnStatus; the last one has the state DRStatusStateDone or
/// DRStatusStateFailed, comes exactly once, and comes also where the recorder cannot be started or
/// dies.
class DRBurn {
 public:
  /// A burn on `device`, which is borrowed and must outlive it.
  static std::unique_ptr<DRBurn> burnForDevice(DRDevice* device);
  ~DRBurn();
  DRBurn(const DRBurn&) = delete;
  DRBurn& operator=(const DRBurn&) = delete;

  void setProperties(DRBurnProperties properties);
  /// Whether the disc is left open for further sessions. False unless set.
  void setAppendable(bool appendable);
  /// Verification is not available: true is refused by `writeLayout` with a failed burn.
  void setVerifyDisc(bool verify);

  /// Starts to write and returns at once. A burn writes one layout in its life; a second call is
  /// ignored.
  void writeLayout(std::unique_ptr<DRTrack> track);

  DRBurnStatus status() const;

  /// The recorder's process, 0 before and after.
  int64_t recorderProcessIdentifier() const;

 private:
  explicit DRBurn(DRDevice* device);
  void report(DRBurnStatus status);

  DRDevice* device_;
  DRBurnProperties properties_;
  bool appendable_ = false;
  bool verify_ = false;
  DRBurnStatus status_;
  std::unique_ptr<DRTrack> track_;
  std::unique_ptr<RecorderRun> run_;
};

}  // namespace kelvane
