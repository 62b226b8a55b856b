// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QString>
#include <optional>

#include "platform/desktop/launcher_progress.h"

class QWidget;

namespace kelvane {

/// What is seen of the window where it is itself not seen: its title, with the disc that is open
/// and how much of the work on it is done, and the progress at the application's entry in the task
/// bar or dock. Main thread only.
class WindowStatus {
 public:
  /// Borrows the window whose title it sets.
  explicit WindowStatus(QWidget& window);

  /// The name of the open disc; empty while none is open.
  void setOpenDisc(const QString& volumeName);
  /// How much of a burn, an erase or a copy is done, in whole percent from 0 to 100; none while
  /// nothing is going on, or nobody knows how far it is.
  void setPercent(std::optional<int> percent);

 private:
  void show();

  QWidget& window_;
  QString openDisc_;
  std::optional<int> percent_;
  desktop::LauncherProgress launcher_;
};

}  // namespace kelvane
