// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/elided_label.h"

#include <QHelpEvent>
#include <QPainter>
#include <QStyle>
#include <QToolTip>

namespace kelvane {

ElidedLabel::ElidedLabel(QWidget* parent) : QLabel(parent) {
  setTextFormat(Qt::PlainText);
}

QSize ElidedLabel::minimumSizeHint() const {
  return {fontMetrics().horizontalAdvance(QStringLiteral("MMM…")), QLabel::sizeHint().height()};
}

QString ElidedLabel::shownText() const {
  return fontMetrics().elidedText(text(), Qt::ElideRight, contentsRect().width());
}

void ElidedLabel::paintEvent(QPaintEvent* event) {
  Q_UNUSED(event);
  QPainter painter(this);
  style()->drawItemText(&painter, contentsRect(),
                        static_cast<int>(Qt::AlignVCenter | Qt::AlignLeading), palette(),
                        isEnabled(), shownText(), foregroundRole());
}

bool ElidedLabel::event(QEvent* event) {
  if (event->type() == QEvent::ToolTip && shownText() != text()) {
    // Rich text is what a tool tip would otherwise guess a name such as "<b>" to be.
    QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(), text().toHtmlEscaped(), this);
    return true;
  }
  return QLabel::event(event);
}

}  // namespace kelvane
