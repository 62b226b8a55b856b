// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/foundation/notification_center.h"

#include <utility>

namespace kelvane {

NotificationCenter& NotificationCenter::defaultCenter() {
  static NotificationCenter center;
  return center;
}

void NotificationCenter::addObserver(const void* observer, std::string name, const void* object,
                                     Handler handler) {
  const std::lock_guard lock(mutex_);
  registrations_.push_back({observer, std::move(name), object, std::move(handler)});
}

void NotificationCenter::removeObserver(const void* observer, const std::string& name,
                                        const void* object) {
  const std::lock_guard lock(mutex_);
  std::erase_if(registrations_, [&](const Registration& registration) {
    return registration.observer == observer && registration.name == name &&
           (object == nullptr || registration.object == object);
  });
}

void NotificationCenter::removeObserver(const void* observer) {
  const std::lock_guard lock(mutex_);
  std::erase_if(registrations_, [&](const Registration& registration) {
    return registration.observer == observer;
  });
}

void NotificationCenter::post(const std::string& name, const void* object, std::any userInfo) {
  std::vector<Handler> handlers;
  {
    const std::lock_guard lock(mutex_);
    for (const Registration& registration : registrations_) {
      const bool senderMatches = registration.object == nullptr || registration.object == object;
      if (registration.name == name && senderMatches) handlers.push_back(registration.handler);
    }
  }
  const Notification notification{name, object, std::move(userInfo)};
  for (const Handler& handler : handlers) handler(notification);
}

}  // namespace kelvane
