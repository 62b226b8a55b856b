// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/recording/dr_device.h"

#include <utility>

#include "platform/recording/drive.h"
#include "platform/recording/drive_registry.h"
#include "platform/recording/drive_watcher.h"

namespace kelvane {

DRDevice::DRDevice(std::unique_ptr<Drive> drive) : drive_(std::move(drive)) {}

DRDevice::DRDevice() = default;

DRDevice::~DRDevice() = default;

std::vector<DRDevice*> DRDevice::devices() {
  return DriveRegistry::shared().devices();
}

bool DRDevice::mediaIsBusy() const {
  return recordings_ > 0 || (drive_ && drive_->isRecordedByAnyone());
}

bool DRDevice::isValid() const {
  return drive_ && drive_->exists();
}

bool DRDevice::mediaIsPresent() const {
  return drive_ && drive_->mediaState().present;
}

bool DRDevice::mediaIsTransitioning() const {
  return drive_ && drive_->mediaState().transitioning;
}

bool DRDevice::writesCD() const {
  return drive_ && drive_->writesCD();
}

std::optional<std::string> DRDevice::mediaType() const {
  if (!drive_) return std::nullopt;
  return mediaTypeOf(drive_->mediaState().profile);
}

bool DRDevice::mediaIsBlank() const {
  return drive_ && drive_->mediaState().blank;
}

bool DRDevice::mediaIsAppendable() const {
  return drive_ && drive_->mediaState().appendable;
}

std::string DRDevice::displayName() const {
  return drive_ ? drive_->displayName() : std::string();
}

std::string DRDevice::bsdName() const {
  return drive_ ? drive_->identity().bsdName : std::string();
}

std::string DRDevice::ioRegistryEntryPath() const {
  return drive_ ? drive_->identity().ioRegistryEntryPath : std::string();
}

std::optional<uint32_t> DRDevice::formatCapacity() const {
  return drive_ ? drive_->formatCapacity() : std::nullopt;
}

DRDeviceStatus DRDevice::status() const {
  return drive_ ? drive_->status() : DRDeviceStatus();
}

std::string DRDevice::mediaIdentity() const {
  return drive_ ? drive_->mediaIdentity() : std::string();
}

void DRDevice::acquireMediaReservation() {}

bool DRDevice::acquireExclusiveAccess() {
  return drive_ && drive_->acquireExclusiveAccess();
}

void DRDevice::releaseExclusiveAccess() {
  if (drive_) drive_->releaseExclusiveAccess();
}

bool DRDevice::ejectMedia() {
  return drive_ && drive_->openTray();
}

bool DRDevice::loadMedia() {
  return drive_ && drive_->closeTray();
}

std::optional<std::string> DRDevice::emulatedDisc() const {
  return drive_ ? drive_->identity().emulatedDisc : std::nullopt;
}

void DRDevice::beginRecording() {
  if (drive_) drive_->leaveAlone();
  ++recordings_;
}

DriveClaimHandover DRDevice::handClaimOver(ChildTask& task) {
  Drive* drive = this->drive();
  if (drive == nullptr) return {nullptr, task};
  drive->keepOthersFromMounting();
  return {drive->giveUpClaim(), task};
}

void DRDevice::endRecording() {
  if (--recordings_ > 0) return;
  if (drive_) drive_->askAgain();
  DriveWatcher::shared().checkSoon(bsdName());
}

}  // namespace kelvane
