// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QCoreApplication>
#include <QTimer>
#include <chrono>
#include <functional>

namespace kelvane::testing {

/// The application object of one test, whose thread is the main thread.
class EventLoop {
 public:
  /// Turns the loop until `condition` holds. False where it has not come to hold after a time that
  /// is far longer than it can take.
  bool runUntil(const std::function<bool()>& condition) {
    constexpr std::chrono::seconds kFarTooLong{100};
    constexpr std::chrono::milliseconds kLookInterval{5};
    const auto deadline = std::chrono::steady_clock::now() + kFarTooLong;
    QTimer look;
    look.start(kLookInterval);
    while (!condition()) {
      if (std::chrono::steady_clock::now() > deadline) return false;
      QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
  }

  /// Delivers what is queued already.
  void deliverQueued() { QCoreApplication::processEvents(); }

 private:
  int argumentCount_ = 1;
  char name_[5] = "test";
  char* arguments_[2] = {name_, nullptr};
  QCoreApplication application_{argumentCount_, arguments_};
};

}  // namespace kelvane::testing
