// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QIcon>
#include <QLabel>

namespace kelvane {

enum class Shade { Full, Faint };

/// The disc icon, as large as the platform's font asks for, drawn with all the pixels that the
/// screen has for it, also when the window is moved to another screen.
class DiscPicture : public QLabel {
  Q_OBJECT

 public:
  DiscPicture(Shade shade, QWidget* parent);

  QSize sizeHint() const override;
  QSize minimumSizeHint() const override { return sizeHint(); }

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  Shade shade_;
  QIcon icon_;
};

}  // namespace kelvane
