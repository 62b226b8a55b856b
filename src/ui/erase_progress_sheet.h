// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QDialog>

#include "ui/erase_follower.h"
#include "ui/remaining_time.h"

class QLabel;
class QProgressBar;

namespace kelvane {

/// The progress panel of erases as a sheet over its parent: what is being done, how far it is, and,
/// where the drive tells that, how long it will still take.
///
/// The drive erases by itself and cannot be stopped, so the sheet cannot be left while it does:
/// Escape and closing it are without effect. A failure is told by an alert that takes its place.
class EraseProgressSheet : public QDialog, public EraseFollower {
  Q_OBJECT

 public:
  explicit EraseProgressSheet(QWidget* parent);

  // Called by the erase that is followed, and by whoever shows a sample of the sheet.
  void showBeginning(const std::string& description) override;
  void showFraction(std::optional<double> fraction) override;
  void showEnd(const std::string& error) override;

 public Q_SLOTS:
  void reject() override;

 Q_SIGNALS:
  /// How much is done, in whole percent; -1 while nobody knows, and when the erase has ended.
  void percentChanged(int percent);

 protected:
  void closeEvent(QCloseEvent* event) override;

 private:
  // All are children of this dialog.
  QLabel* descriptionField_;
  QProgressBar* progressBar_;
  QLabel* remainingField_;

  RemainingTime remainingTime_;
};

}  // namespace kelvane
