// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <signal.h>

#include <array>

namespace kelvane::virtualdrive::tool {

/// As long as it lives, the signals that end a program end its work instead, so that it can tidy
/// up. One at a time.
class StopSignals {
 public:
  StopSignals();
  ~StopSignals();
  StopSignals(const StopSignals&) = delete;
  StopSignals& operator=(const StopSignals&) = delete;

  /// Whether one of them has come.
  bool stopRequested() const;

 private:
  static constexpr std::array<int, 3> kSignals{SIGINT, SIGTERM, SIGHUP};
  std::array<struct sigaction, kSignals.size()> before_{};
};

}  // namespace kelvane::virtualdrive::tool
