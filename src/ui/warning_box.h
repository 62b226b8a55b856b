// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QWidget>

class QLabel;

namespace kelvane {

/// A warning within a sheet: an icon, what is wrong, and what can be done. Hidden until it has
/// something to say; screen readers are told when it has.
class WarningBox : public QWidget {
  Q_OBJECT

 public:
  /// `name` is its object name.
  explicit WarningBox(const char* name, QWidget* parent = nullptr);

  /// Shows the warning; hides the box where `message` is empty.
  void setWarning(const QString& message, const QString& explanation);

 Q_SIGNALS:
  /// It says something that it has not said before; screen readers are told at that moment.
  void appeared();

 private:
  // Both are children of this widget.
  QLabel* message_;
  QLabel* explanation_;
};

}  // namespace kelvane
