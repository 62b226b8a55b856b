// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/paragraph.h"

#include <QLabel>
#include <algorithm>

#include "ui/window_metrics.h"

namespace kelvane {

QLabel* makeParagraph(const QString& text, double width, QWidget* parent) {
  auto* label = new QLabel(parent);
  label->setTextFormat(Qt::PlainText);
  label->setWordWrap(true);
  label->setFixedWidth(toPixels(width, parent->font()));
  setParagraph(*label, text);
  return label;
}

void setParagraph(QLabel& label, const QString& text) {
  label.setText(text);
  // A change of the text has it back.
  QSizePolicy policy = label.sizePolicy();
  policy.setHeightForWidth(false);
  label.setSizePolicy(policy);
  label.setFixedHeight(std::max(0, label.heightForWidth(label.minimumWidth())));
}

}  // namespace kelvane
