// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QPushButton>

namespace kelvane {

/// A push button with air around its text also where the desktop's style leaves none, and which
/// Return presses as the space bar does while it has the focus.
class RoomyButton : public QPushButton {
  Q_OBJECT

 public:
  explicit RoomyButton(QWidget* parent = nullptr);

  /// Sets the caption, in which "&" marks the mnemonic and "&&" stands for itself. Without the mark
  /// it is also the accessible name.
  void setCaption(const QString& caption);

  QSize sizeHint() const override;
  QSize minimumSizeHint() const override { return sizeHint(); }
};

}  // namespace kelvane
