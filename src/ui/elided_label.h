// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QLabel>

namespace kelvane {

/// A one-line label of plain text that shortens a text for which there is no room, and then shows
/// the whole of it as a tool tip. `text()` is always the whole text.
class ElidedLabel : public QLabel {
  Q_OBJECT

 public:
  explicit ElidedLabel(QWidget* parent = nullptr);

  QSize minimumSizeHint() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;
  bool event(QEvent* event) override;

 private:
  QString shownText() const;
};

}  // namespace kelvane
