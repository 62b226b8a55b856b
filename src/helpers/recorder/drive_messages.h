// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <string>

namespace kelvane::recorder {

/// What libburn and, through it, the drive had to say.
///
/// libburn queues its messages; they are taken from there, and the worst is kept: of several
/// equally bad ones the first, which is the cause of the others.
class DriveMessages {
 public:
  /// Queues what is at least a failure of one operation; nothing is printed. To be called once
  /// libburn is initialised.
  static void startQueue();

  /// Takes what has been queued since the last call.
  void collect();

  /// The worst message so far; empty where there was none.
  const std::string& worst() const { return worst_; }

 private:
  std::string worst_;
  int worstSeverity_ = -1;
};

}  // namespace kelvane::recorder
