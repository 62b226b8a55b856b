// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QWidget>

#include "ui/remaining_time.h"

class QLabel;

namespace kelvane {

class BurnProgressBar;

/// The content view of a burn: what is being done, how much of it is, and, while the disc is
/// written, how long that will still take.
class KVBurnView : public QWidget {
  Q_OBJECT

 public:
  explicit KVBurnView(QWidget* parent = nullptr);

  void setMessage(const QString& text);
  BurnProgressBar& progressIndicator() { return *progressIndicator_; }

 private:
  void showPercent(int percent);
  QString remainingTimeText();

  // All are children of this widget.
  QLabel* messageTextField_;
  BurnProgressBar* progressIndicator_;
  QLabel* percentField_;
  QLabel* remainingField_;

  RemainingTime remainingTime_;
  bool isWriting_ = false;
};

}  // namespace kelvane
