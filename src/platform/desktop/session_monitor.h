// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <chrono>
#include <functional>
#include <memory>

#include "platform/desktop/patience.h"

namespace kelvane::desktop {

/// Hears from the desktop's portal when the user's session is to end
/// (org.freedesktop.portal.Inhibit, CreateMonitor). The session manager waits a second for
/// `acknowledge`; who wants it to wait for longer holds a LogoutInhibition by then.
///
/// Where there is no portal, or it knows no monitors, nothing is ever heard; where it refuses, the
/// system log gets a line. Main thread only; nothing blocks.
class SessionMonitor {
 public:
  /// As the portal numbers them.
  enum class State : unsigned {
    Running = 1,   ///< Also: the end of the session has been given up.
    QueryEnd = 2,  ///< The session is to end, unless somebody inhibits that.
    Ending = 3,
  };

  explicit SessionMonitor(std::function<void(State)> changed,
                          std::chrono::milliseconds patience = kPatience);
  ~SessionMonitor();
  SessionMonitor(const SessionMonitor&) = delete;
  SessionMonitor& operator=(const SessionMonitor&) = delete;

  /// Tells that `State::QueryEnd` has been heard, and whatever is to inhibit it is in place.
  void acknowledge();

 private:
  class Listener;
  std::unique_ptr<Listener> listener_;
};

}  // namespace kelvane::desktop
