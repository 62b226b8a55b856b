// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QCoreApplication>
#include <functional>

#include "foundation/turn_until.h"

namespace kelvane::testing {

/// The application object of one test, whose thread is the main thread.
class EventLoop {
 public:
  /// Turns the loop until `condition` holds. False where it has not come to hold after a time that
  /// is far longer than it can take.
  bool runUntil(const std::function<bool()>& condition) { return test::turnUntil(condition); }

  /// Delivers what is queued already.
  void deliverQueued() { QCoreApplication::processEvents(); }

 private:
  int argumentCount_ = 1;
  char name_[5] = "test";
  char* arguments_[2] = {name_, nullptr};
  QCoreApplication application_{argumentCount_, arguments_};
};

}  // namespace kelvane::testing
