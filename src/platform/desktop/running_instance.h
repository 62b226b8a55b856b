// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <chrono>
#include <functional>
#include <memory>

#include "platform/desktop/patience.h"

namespace kelvane::desktop {

class ApplicationObject;

/// Makes this process the one that the user's session means by the application
/// (org.freedesktop.Application at the name org.kelvanefs.kelvanefs), for as long as it lives.
/// Where there is no session bus, or another process is that already, nothing happens. Main thread
/// only; nothing blocks.
class RunningInstance {
 public:
  /// `activated` is called whenever the user asks for the application again.
  explicit RunningInstance(std::function<void()> activated);
  ~RunningInstance();
  RunningInstance(const RunningInstance&) = delete;
  RunningInstance& operator=(const RunningInstance&) = delete;

 private:
  std::unique_ptr<ApplicationObject> object_;
};

/// Asks the instance that runs in this session to show itself, and waits for its answer, with the
/// event loop turning: for a process that has nothing else to do. False where there is none, or it
/// does not answer in time.
bool showRunningInstance(std::chrono::milliseconds patience = kPatience);

}  // namespace kelvane::desktop
