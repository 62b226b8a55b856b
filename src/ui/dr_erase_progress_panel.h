// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <memory>
#include <string>

namespace kelvane {

class DRErase;

/// Carries out an erase while it shows how that goes, and what went wrong. One erase at a time.
/// Main thread only.
class DREraseProgressPanel {
 public:
  virtual ~DREraseProgressPanel() = default;

  /// The text that the panel shows from the next erase on.
  virtual void setDescription(const std::string& description) = 0;

  /// Opens the panel as a sheet on the main window, starts the erase and returns. The panel keeps
  /// the erase until its end, closes itself then, and tells the user why where it has failed.
  virtual void beginProgressSheetForErase(std::unique_ptr<DRErase> erase) = 0;
};

}  // namespace kelvane
