// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <chrono>
#include <memory>
#include <string>

#include "platform/desktop/patience.h"

namespace kelvane::desktop {

/// Keeps the machine from going to sleep, from being shut down by a user and from counting as idle,
/// from its construction until it is deleted (org.freedesktop.login1, Manager.Inhibit with
/// "sleep:shutdown:idle" and the mode "block").
///
/// The right is a descriptor that the login manager hands out and that is closed with the object;
/// the kernel closes it if the process dies. Programs that are started meanwhile to outlive this
/// one hold it, too: a disc that is being written when the application dies is written to its end,
/// and the machine stays awake for it. Where there is no login manager, or it refuses, the
/// system log gets one line and nothing else happens. Main thread only; nothing blocks.
class SleepInhibition {
 public:
  /// `why` is shown to users, in their language.
  explicit SleepInhibition(const std::string& why, std::chrono::milliseconds patience = kPatience);
  ~SleepInhibition();
  SleepInhibition(const SleepInhibition&) = delete;
  SleepInhibition& operator=(const SleepInhibition&) = delete;

  /// Whether the login manager has granted it by now.
  bool isHeld() const;

 private:
  struct Right;
  std::unique_ptr<Right> right_;
};

}  // namespace kelvane::desktop
