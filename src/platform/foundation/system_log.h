// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "platform/foundation/placeholders.h"

namespace kelvane {

/// Writes one plain line to the system log (syslog, which the journal takes in) and to standard
/// error.
///
/// Thread-safe. Line feeds within the line, which a file name may hold, are written as "\n" so that
/// a line stays one.
void writeToSystemLog(std::string_view line);

/// The same with "%@" and "%i" filled: `systemLog("unmount attempt %i", status)`.
template <typename... Values>
void systemLog(std::string_view text, const Values&... values) {
  writeToSystemLog(format(text, values...));
}

/// While it lives, every line of the system log goes to `sink` instead, on the thread that logs.
/// For tests; one at a time.
class SystemLogRedirection {
 public:
  explicit SystemLogRedirection(std::function<void(const std::string& line)> sink);
  ~SystemLogRedirection();
  SystemLogRedirection(const SystemLogRedirection&) = delete;
  SystemLogRedirection& operator=(const SystemLogRedirection&) = delete;
};

}  // namespace kelvane
