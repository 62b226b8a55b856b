// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <any>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

namespace kelvane {

/// What an observer is told.
struct Notification {
  std::string name;
  const void* object = nullptr;  ///< The sender; borrowed, compared only.
  std::any userInfo;             ///< What the poster adds; its type belongs to the name.
};

/// Delivers notifications by name and sender, synchronously, on the thread that posts.
///
/// Thread-safe. Observers are called in the order in which they were added and without any lock
/// held, so an observer may add, remove and post. An observer that is removed while a notification
/// is being delivered on another thread may still be called once for it. An observer that must work
/// on the main thread moves there itself (`performOnMainThread`).
class NotificationCenter {
 public:
  using Handler = std::function<void(const Notification&)>;

  /// The application's own centre.
  static NotificationCenter& defaultCenter();

  /// Calls `handler` for notifications named `name` from `object`, or from any sender where
  /// `object` is null. `observer` only identifies the registration for its removal; it is not
  /// owned.
  void addObserver(const void* observer, std::string name, const void* object, Handler handler);

  /// Removes the observer's registrations for `name`, from `object` or (null) whatever sender they
  /// were made for.
  void removeObserver(const void* observer, const std::string& name, const void* object);

  /// Removes all of the observer's registrations.
  void removeObserver(const void* observer);

  /// Calls every matching observer, on this thread, and returns when all have returned.
  void post(const std::string& name, const void* object, std::any userInfo = {});

 private:
  struct Registration {
    const void* observer;
    std::string name;
    const void* object;
    Handler handler;
  };

  std::mutex mutex_;  // Guards registrations_; never held while a handler runs.
  std::vector<Registration> registrations_;
};

}  // namespace kelvane
