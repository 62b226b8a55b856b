// SPDX-License-Identifier: GPL-2.0-or-later
#include "app/closed_drives.h"

#include <utility>

#include "app/warning_alert.h"
#include "platform/foundation/system_log.h"
#include "platform/recording/dr_device.h"
#include "platform/recording/dr_notification_center.h"
#include "platform/recording/drive_events.h"
#include "platform/recording/drive_permission.h"

namespace kelvane {
namespace {

std::string reasonOf(const DRDevice& device) {
  if (device.emulatedDisc() || !device.isValid()) return {};
  // The kernel makes the node for root alone; udev gives it to the others a moment later.
  if (!DriveEvents::isSettled(device.bsdName())) return {};
  return whyDriveIsClosed("/dev/" + device.bsdName());
}

}  // namespace

ClosedDrives::ClosedDrives(WindowOutlets& window, Devices devices, Reason reason)
    : window_(window),
      devices_(devices ? std::move(devices) : &DRDevice::devices),
      reason_(reason ? std::move(reason) : &reasonOf) {
  DRNotificationCenter::currentRunLoopCenter().addObserver(
      this, [this](const Notification&) { look(); }, DRDeviceStatusChangedNotification, nullptr);
}

ClosedDrives::~ClosedDrives() {
  DRNotificationCenter::currentRunLoopCenter().removeObserver(this);
}

void ClosedDrives::look() {
  std::string news;
  for (const DRDevice* device : devices_()) {
    const std::string reason = reason_(*device);
    if (reason.empty()) {
      known_.erase(device->bsdName());
    } else if (known_.insert(device->bsdName()).second) {
      systemLog("%@", reason);
      news += (news.empty() ? "" : "\n") + reason;
    }
  }
  if (!news.empty()) window_.beginAlertSheet(warningAlert("DriveClosed", news), nullptr);
}

}  // namespace kelvane
