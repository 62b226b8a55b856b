// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <optional>

namespace kelvane::desktop {

/// Progress at the application's entry in the desktop's task bar or dock.
///
/// There is no standard for it; what the docks and task bars listen to is the signal Update of
/// com.canonical.Unity.LauncherEntry, which Unity introduced and KDE, GNOME's docks and others have
/// taken over. Nobody answers it, and where nobody listens nothing happens. Main thread only.
class LauncherProgress {
 public:
  LauncherProgress() = default;
  /// Takes the progress away.
  ~LauncherProgress();
  LauncherProgress(const LauncherProgress&) = delete;
  LauncherProgress& operator=(const LauncherProgress&) = delete;

  /// Shows how much is done, from 0 to 1; none for nothing that could be shown. What is not a whole
  /// percent more or less than before is not sent.
  void show(std::optional<double> fraction);

 private:
  std::optional<int> shownPercent_;
};

}  // namespace kelvane::desktop
