// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <any>
#include <functional>
#include <string>

#include "platform/foundation/notification_center.h"

namespace kelvane {

/// A drive was added or has gone, its tray was opened or closed, its disc has changed. The object
/// is the DRDevice; there is no user information.
inline constexpr char DRDeviceStatusChangedNotification[] = "DRDeviceStatusChangedNotification";
/// The button of a drive was pressed, and the tray stays shut, since a program has claimed the
/// disc. The object is the DRDevice; there is no user information.
inline constexpr char DRDeviceTrayKeptShutNotification[] = "DRDeviceTrayKeptShutNotification";
/// A burn has come further. The object is the DRBurn, the user information its DRBurnStatus.
inline constexpr char DRBurnStatusChangedNotification[] = "DRBurnStatusChangedNotification";
/// An erase has come further. The object is the DRErase, the user information its DREraseStatus.
inline constexpr char DREraseStatusChangedNotification[] = "DREraseStatusChangedNotification";

/// Delivers what drives, burns and erases report, on the main thread, from its event loop: never
/// within the call that caused it. Notifications arrive in the order in which they were posted.
/// Observers are added and removed on the main thread; post from any.
class DRNotificationCenter {
 public:
  using Handler = std::function<void(const Notification&)>;

  static DRNotificationCenter& currentRunLoopCenter();

  /// Calls `handler` for notifications named `name` from `object`, or from any where it is null.
  /// `observer` only identifies the registration. The first observer of
  /// DRDeviceStatusChangedNotification starts the watching of the drives, and gets one notification
  /// for each drive there is.
  void addObserver(const void* observer, Handler handler, const std::string& name,
                   const void* object);

  /// Removes all registrations of the observer; what is queued no longer reaches it.
  void removeObserver(const void* observer);

  /// Queues a notification. `object` is compared only and may be gone when it is delivered.
  void post(const std::string& name, const void* object, std::any userInfo = {});

 private:
  NotificationCenter observers_;
};

}  // namespace kelvane
