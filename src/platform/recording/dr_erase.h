// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <cstdint>
#include <memory>

#include "platform/recording/dr_burn_status.h"

namespace kelvane {

class DRDevice;
class RecorderRun;

/// Erases the rewritable disc of a device, quickly: what the drive needs to take the disc for a
/// blank one again is erased, the data itself stays until it is overwritten.
///
/// The erasing itself is done by the recorder, a program of its own in a session of its own: it
/// goes on to the end whatever becomes of this object or this process. Main thread only. Each
/// change of the status posts DREraseStatusChangedNotification (DRNotificationCenter), whose
/// `userInfo` is a DREraseStatus; the last one has the state DRStatusStateDone or
/// DRStatusStateFailed, comes exactly once, and comes also where the recorder cannot be started or
/// dies. Meanwhile the device is busy and in this process's exclusive access; both changes, and the
/// end of an erase that changed nothing, post DRDeviceStatusChangedNotification.
class DRErase {
 public:
  /// An erase on `device`, which is borrowed and must outlive it.
  static std::unique_ptr<DRErase> eraseForDevice(DRDevice* device);
  ~DRErase();
  DRErase(const DRErase&) = delete;
  DRErase& operator=(const DRErase&) = delete;

  /// Starts to erase and returns at once. An erase starts once in its life; a second call is
  /// ignored. Volumes of the disc that are still mounted are the caller's business.
  void start();

  DRDevice* device() const { return device_; }
  DREraseStatus status() const { return status_; }

  /// The recorder's process, 0 before and after.
  int64_t recorderProcessIdentifier() const;

 private:
  explicit DRErase(DRDevice* device);
  bool isRunning() const { return run_ && !isFinal(status_); }
  std::string whyItCannotStart() const;
  void letGoOfDevice();
  void announceDevice() const;
  void report(DREraseStatus status);

  DRDevice* device_;
  DREraseStatus status_;
  bool started_ = false;
  std::unique_ptr<RecorderRun> run_;
};

}  // namespace kelvane
