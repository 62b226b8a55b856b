// SPDX-License-Identifier: GPL-2.0-or-later
#include "app/shut_tray_notice.h"

#include "app/kv_controller.h"
#include "app/warning_alert.h"
#include "platform/recording/dr_notification_center.h"

namespace kelvane {

ShutTrayNotice::ShutTrayNotice(const KVController& controller, WindowOutlets& window)
    : controller_(controller), window_(window) {
  DRNotificationCenter::currentRunLoopCenter().addObserver(
      this, [this](const Notification& notification) { tell(notification.object); },
      DRDeviceTrayKeptShutNotification, nullptr);
}

ShutTrayNotice::~ShutTrayNotice() {
  DRNotificationCenter::currentRunLoopCenter().removeObserver(this);
}

// Another drive may be another program's.
void ShutTrayNotice::tell(const void* device) {
  if (isTold_ || device == nullptr || device != controller_.currentDevice()) return;
  isTold_ = true;
  window_.beginAlertSheet(warningAlert("TrayKeptShut", {}), [this](int) { isTold_ = false; });
}

}  // namespace kelvane
