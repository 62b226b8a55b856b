// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QTimer>
#include <chrono>
#include <functional>

namespace kelvane::test {

/// Turns the event loop of this thread until `condition` holds, which is looked at time and again.
/// False, and a failure, where it has not come to hold after a time that is far longer than it can
/// take, though shorter than the one after which a test is killed: what it has started ends.
inline bool turnUntil(const std::function<bool()>& condition) {
  constexpr std::chrono::seconds kFarTooLong{100};
  constexpr std::chrono::milliseconds kLookInterval{5};
  const auto deadline = std::chrono::steady_clock::now() + kFarTooLong;
  QTimer look;
  look.start(kLookInterval);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) {
      ADD_FAILURE() << "waited in vain";
      return false;
    }
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
  }
  return true;
}

}  // namespace kelvane::test
