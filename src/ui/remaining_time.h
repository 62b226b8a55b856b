// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QString>
#include <chrono>
#include <functional>

namespace kelvane {

/// How long something will still take, judged by how fast it went since `begin`. Main thread only.
class RemainingTime {
 public:
  using Clock = std::function<std::chrono::milliseconds()>;

  /// Time passes by itself.
  RemainingTime();
  /// Time passes as `clock` says.
  explicit RemainingTime(Clock clock);

  /// From here on it is judged; `fraction`, from 0 to 1, was done before.
  void begin(double fraction = 0);
  /// It is judged from the next `textAt` on: what is done by then tells nothing of the rest.
  void beginWithNext() { beginsWithNext_ = true; }

  /// In words of the user's language; empty while too little has been seen to judge by, and when
  /// all is done.
  QString textAt(double fraction);

 private:
  Clock clock_;
  std::chrono::milliseconds beginning_{0};
  double fractionAtBeginning_ = 0;
  bool beginsWithNext_ = false;
};

}  // namespace kelvane
