// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QWidget>

class QLabel;

namespace kelvane {

/// The content view that says why there is no disc list: a message beside a faint picture of a
/// disc.
class MessageView : public QWidget {
  Q_OBJECT

 public:
  explicit MessageView(QWidget* parent = nullptr);

  void setMessage(const QString& text);
  QString message() const;

 private:
  QLabel* messageTextField_;  // A child of this widget.
};

}  // namespace kelvane
