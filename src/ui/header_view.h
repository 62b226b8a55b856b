// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QWidget>

namespace kelvane {

class AnimateTextField;

/// The background of the header line, which fills it and is clipped by it while it slides.
class HeaderView : public QWidget {
  Q_OBJECT

 public:
  explicit HeaderView(QWidget* parent);

  AnimateTextField& line() { return *headerLineTextField_; }

 protected:
  void resizeEvent(QResizeEvent* event) override;

 private:
  AnimateTextField* headerLineTextField_;  // A child of this widget.
};

}  // namespace kelvane
