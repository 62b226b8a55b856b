// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "platform/foundation/system_log.h"

namespace kelvane::test {

/// Keeps the lines of the system log while it lives.
class RecordedLog {
 public:
  std::vector<std::string> lines() const {
    const std::lock_guard guard(mutex_);
    return lines_;
  }

 private:
  mutable std::mutex mutex_;
  std::vector<std::string> lines_;
  SystemLogRedirection redirection_{[this](const std::string& line) {
    const std::lock_guard guard(mutex_);
    lines_.push_back(line);
  }};
};

}  // namespace kelvane::test
