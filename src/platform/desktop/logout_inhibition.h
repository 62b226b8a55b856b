// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "platform/desktop/patience.h"

namespace kelvane::desktop {

/// Asks the desktop not to end the user's session, from its construction until it is deleted
/// (org.freedesktop.portal.Inhibit, flag 1). The login manager knows nothing of that: a log-out
/// is the session manager's, and the portal speaks for that of each desktop.
///
/// Where there is no portal nothing happens; where it refuses, or does not answer in time, the
/// system log gets a line. What it grants after that counts all the same, and is given back. The
/// portal ends the inhibition by itself if the process dies. Main thread only; nothing blocks.
class LogoutInhibition {
 public:
  /// `why` is shown to users, in their language. `answered`, where given, is called once the portal
  /// has granted it or has not within `patience`, unless the object is deleted before.
  explicit LogoutInhibition(const std::string& why, std::function<void()> answered = {},
                            std::chrono::milliseconds patience = kPatience);
  ~LogoutInhibition();
  LogoutInhibition(const LogoutInhibition&) = delete;
  LogoutInhibition& operator=(const LogoutInhibition&) = delete;

  /// Whether the portal has granted it by now.
  bool isHeld() const;

 private:
  struct Request;
  std::shared_ptr<Request> request_;
};

}  // namespace kelvane::desktop
