// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/recording/dr_notification_center.h"

#include <utility>

#include "platform/foundation/main_thread.h"
#include "platform/recording/drive_watcher.h"

namespace kelvane {

DRNotificationCenter& DRNotificationCenter::currentRunLoopCenter() {
  static DRNotificationCenter center;
  return center;
}

void DRNotificationCenter::addObserver(const void* observer, Handler handler,
                                       const std::string& name, const void* object) {
  observers_.addObserver(observer, name, object, std::move(handler));
  if (name == DRDeviceStatusChangedNotification) DriveWatcher::shared().start();
}

void DRNotificationCenter::removeObserver(const void* observer) {
  observers_.removeObserver(observer);
}

void DRNotificationCenter::post(const std::string& name, const void* object, std::any userInfo) {
  performOnMainThread([this, name, object, userInfo = std::move(userInfo)] {
    observers_.post(name, object, userInfo);
  });
}

}  // namespace kelvane
