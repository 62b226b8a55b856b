// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/recording/dr_erase.h"

#include <utility>

#include "platform/recording/dr_device.h"
#include "platform/recording/dr_notification_center.h"
#include "platform/recording/drive.h"
#include "platform/recording/recorder_run.h"

namespace kelvane {

std::unique_ptr<DRErase> DRErase::eraseForDevice(DRDevice* device) {
  return std::unique_ptr<DRErase>(new DRErase(device));
}

DRErase::DRErase(DRDevice* device) : device_(device) {}

// The recorder goes on without us, and the drive's own lock shows that it is busy.
DRErase::~DRErase() {
  if (isRunning()) letGoOfDevice();
}

void DRErase::start() {
  if (std::exchange(started_, true)) return;
  if (const std::string problem = whyItCannotStart(); !problem.empty()) {
    return report(failedStatus(problem));
  }
  if (!device_->acquireExclusiveAccess()) {
    return report(failedStatus("Another program uses the drive."));
  }
  auto run =
      std::make_unique<RecorderRun>(*device_, RecorderOrder{.task = RecorderOrder::Task::Erase},
                                    [this](const DREraseStatus& status) { report(status); });
  device_->beginRecording();
  const std::string problem = run->start();
  if (!problem.empty()) {
    letGoOfDevice();
    return report(failedStatus(problem));
  }
  run_ = std::move(run);
  announceDevice();
  DREraseStatus preparing;
  preparing.DRStatusStateKey = DRStatusStatePreparing;
  preparing.DRStatusPercentCompleteKey = 0.0;
  report(std::move(preparing));
}

std::string DRErase::whyItCannotStart() const {
  if (device_ == nullptr || device_->drive() == nullptr) return "There is no drive to erase with.";
  if (device_->mediaIsBusy()) return "Another recording is running on this drive.";
  return device_->drive()->identity().programProblem;
}

// Whoever looks at the disc from now on finds it as the erase has left it, also where that is how
// it was: volumes may have been taken away for the erase.
void DRErase::letGoOfDevice() {
  device_->endRecording();
  device_->releaseExclusiveAccess();
  announceDevice();
}

void DRErase::announceDevice() const {
  DRNotificationCenter::currentRunLoopCenter().post(DRDeviceStatusChangedNotification, device_);
}

void DRErase::report(DREraseStatus status) {
  status_ = std::move(status);
  if (run_ && isFinal(status_)) letGoOfDevice();
  // Volumes may have been taken away for an erase that does not begin.
  if (!run_ && isFinal(status_)) announceDevice();
  DRNotificationCenter::currentRunLoopCenter().post(DREraseStatusChangedNotification, this,
                                                    status_);
}

int64_t DRErase::recorderProcessIdentifier() const {
  return run_ ? run_->processIdentifier() : 0;
}

}  // namespace kelvane
