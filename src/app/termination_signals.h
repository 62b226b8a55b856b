// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <functional>
#include <memory>

class QSocketNotifier;

namespace kelvane {

/// Turns SIGINT, SIGTERM and SIGHUP into calls of a handler on the main thread, from its event
/// loop, as long as it lives. One at a time.
class TerminationSignals {
 public:
  explicit TerminationSignals(std::function<void(int signalNumber)> handler);
  ~TerminationSignals();
  TerminationSignals(const TerminationSignals&) = delete;
  TerminationSignals& operator=(const TerminationSignals&) = delete;

 private:
  std::function<void(int)> handler_;
  std::unique_ptr<QSocketNotifier> notifier_;
};

}  // namespace kelvane
