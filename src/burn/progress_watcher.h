// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <memory>
#include <string>

#include "platform/foundation/progress_indicator.h"

class QTimer;

namespace kelvane {

/// Follows the growth of a file that another program writes, and moves a progress bar with it.
///
/// Main thread only, whose event loop runs the timer.
class ProgressWatcher {
 public:
  ProgressWatcher();
  ~ProgressWatcher();
  ProgressWatcher(const ProgressWatcher&) = delete;
  ProgressWatcher& operator=(const ProgressWatcher&) = delete;

  /// Looks at the file at `path` every 0.2 seconds from now on. `targetSize` is the size in bytes
  /// at which it counts as complete. `indicator` is borrowed and may be null; its range is none of
  /// our business.
  void startWatching(const std::string& path, double targetSize, ProgressIndicator* indicator);
  void stopWatching();

  /// One look: where the file exists and is of another size than at the last look, queues
  /// `updateIndicator` on the main thread. A fraction that is not a number (an empty file of target
  /// size 0) counts as another one each time.
  void checkProgress();

  /// Shows the fraction last seen on the bar, if there is one.
  void updateIndicator();

 private:
  std::string filePath;
  ProgressIndicator* indicator = nullptr;
  double targetSize = 0.0;
  std::unique_ptr<QTimer> progressTimer;
  double progress = 0.0;
  // Queued updates hold it weakly: they come to nothing once the watcher is gone.
  std::shared_ptr<ProgressWatcher*> self_;
};

}  // namespace kelvane
