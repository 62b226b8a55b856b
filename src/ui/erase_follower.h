// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/recording/dr_burn_status.h"
#include "ui/dr_erase_progress_panel.h"

namespace kelvane {

namespace desktop {
class WorkInhibition;
}

/// What every progress panel of erases does, however it shows it: starts the erase, follows it and
/// lets go of it. Meanwhile the desktop is asked not to interrupt. Main thread only.
class EraseFollower : public DREraseProgressPanel {
 public:
  EraseFollower();
  /// An erase that is still running goes on to its end by itself.
  ~EraseFollower() override;
  EraseFollower(const EraseFollower&) = delete;
  EraseFollower& operator=(const EraseFollower&) = delete;

  void setDescription(const std::string& description) override { description_ = description; }
  void beginProgressSheetForErase(std::unique_ptr<DRErase> erase) override;

  bool isErasing() const { return erase_ != nullptr; }

 protected:
  /// The erase begins.
  virtual void showBeginning(const std::string& description) = 0;
  /// This much of it is done, 0.0 to 1.0; none while the drive does not tell.
  virtual void showFraction(std::optional<double> fraction) = 0;
  /// It has ended; `error` says why it failed, and is empty where the disc is blank now.
  /// `isErasing` is false already.
  virtual void showEnd(const std::string& error) = 0;

 private:
  void eraseStatusChanged(const DREraseStatus& status);

  std::string description_;
  std::unique_ptr<DRErase> erase_;
  std::unique_ptr<desktop::WorkInhibition> inhibition_;
};

}  // namespace kelvane
