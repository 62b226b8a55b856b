// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QWidget>

class QLabel;

namespace kelvane {

class BurnProgressBar;

/// The content view of a burn: what is being done, and how much of it is.
class KVBurnView : public QWidget {
  Q_OBJECT

 public:
  explicit KVBurnView(QWidget* parent = nullptr);

  QLabel* messageTextField() const { return messageTextField_; }
  BurnProgressBar& progressIndicator() { return *progressIndicator_; }

 private:
  void showPercent(int percent);

  // All are children of this widget.
  QLabel* messageTextField_;
  BurnProgressBar* progressIndicator_;
  QLabel* percentField_;
};

}  // namespace kelvane
