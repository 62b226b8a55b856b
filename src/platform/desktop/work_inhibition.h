// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <memory>
#include <string>

namespace kelvane::desktop {

class LogoutInhibition;
class SleepInhibition;

/// What a burn or an erase holds while it runs: the machine stays awake and the session open, as
/// far as the desktop can be asked for that. Main thread only; nothing blocks.
class WorkInhibition {
 public:
  /// `why` is shown to users, in their language.
  explicit WorkInhibition(const std::string& why);
  ~WorkInhibition();
  WorkInhibition(const WorkInhibition&) = delete;
  WorkInhibition& operator=(const WorkInhibition&) = delete;

 private:
  std::unique_ptr<SleepInhibition> sleep_;
  std::unique_ptr<LogoutInhibition> logout_;
};

}  // namespace kelvane::desktop
