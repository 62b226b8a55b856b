// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <functional>
#include <string>

namespace kelvane::isomount {

/// How a process that goes on in the background tells the one that was started how far it has come.
/// Until it is ready, its standard error leads there too, so that the words of libfuse and
/// fusermount3 arrive.
class StartReport {
 public:
  /// `descriptor` is owned; -1 makes a report that nobody waits for.
  explicit StartReport(int descriptor) : descriptor_(descriptor) {}
  ~StartReport();
  StartReport(const StartReport&) = delete;
  StartReport& operator=(const StartReport&) = delete;

  void mounted();
  /// Ends the report; later calls do nothing.
  void ready();

 private:
  void send(char mark);

  int descriptor_;
};

struct StartOutcome {
  bool mounted = false;  ///< it got as far as the mount
  bool ready = false;
  std::string words;  ///< the last line it said on standard error
};

/// Runs `work` in a child process of its own session, in the root directory, with no descriptor of
/// a terminal, and returns when that has reported to be ready or has ended. The child ends with
/// what `work` returns.
StartOutcome startDetached(const std::function<int(StartReport&)>& work);

}  // namespace kelvane::isomount
