// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/recording/dr_burn.h"

#include <utility>

#include "platform/recording/dr_device.h"
#include "platform/recording/dr_notification_center.h"
#include "platform/recording/drive.h"
#include "platform/recording/recorder_run.h"

namespace kelvane {

std::unique_ptr<DRBurn> DRBurn::burnForDevice(DRDevice* device) {
  return std::unique_ptr<DRBurn>(new DRBurn(device));
}

DRBurn::DRBurn(DRDevice* device) : device_(device) {}

// The recorder goes on without us, and the drive's own lock shows that it is busy.
DRBurn::~DRBurn() {
  if (run_ && !isFinal(status_)) device_->endRecording();
}

void DRBurn::setProperties(DRBurnProperties properties) {
  properties_ = std::move(properties);
}

void DRBurn::setAppendable(bool appendable) {
  appendable_ = appendable;
}

void DRBurn::setVerifyDisc(bool verify) {
  verify_ = verify;
}

void DRBurn::writeLayout(std::unique_ptr<DRTrack> track) {
  if (track_) return;
  track_ = std::move(track);
  if (verify_) return report(failedStatus("Verifying a written disc is not available."));
  if (device_ == nullptr || device_->drive() == nullptr) {
    return report(failedStatus("There is no drive to write with."));
  }
  const DriveIdentity& drive = device_->drive()->identity();
  if (!drive.programProblem.empty()) return report(failedStatus(drive.programProblem));
  const RecorderOrder order{.imagePath = track_->producer().sourcePath(),
                            .appendable = appendable_,
                            .underrunProtection = properties_.DRBurnUnderrunProtectionKey != 0,
                            .speed = properties_.DRBurnRequestedSpeedKey};
  auto run = std::make_unique<RecorderRun>(*device_, order,
                                           [this](const DRBurnStatus& status) { report(status); });
  device_->beginRecording();
  const std::string problem = run->start();
  if (!problem.empty()) {
    device_->endRecording();
    return report(failedStatus(problem));
  }
  run_ = std::move(run);
  DRBurnStatus preparing;
  preparing.DRStatusStateKey = DRStatusStatePreparing;
  preparing.DRStatusPercentCompleteKey = 0.0;
  report(std::move(preparing));
}

void DRBurn::report(DRBurnStatus status) {
  status_ = std::move(status);
  if (run_ && isFinal(status_)) device_->endRecording();
  DRNotificationCenter::currentRunLoopCenter().post(DRBurnStatusChangedNotification, this, status_);
}

DRBurnStatus DRBurn::status() const {
  return status_;
}

int64_t DRBurn::recorderProcessIdentifier() const {
  return run_ ? run_->processIdentifier() : 0;
}

}  // namespace kelvane
