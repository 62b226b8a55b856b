// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/message_view.h"

#include <QHBoxLayout>
#include <QLabel>

#include "ui/view_parts.h"
#include "ui/window_metrics.h"

namespace kelvane {

MessageView::MessageView(QWidget* parent) : QWidget(parent) {
  setObjectName(QStringLiteral("messageView"));
  auto* picture = makeDiscPicture(Shade::Faint, this);
  messageTextField_ = makeTextField("messageTextField", "AccessibleMessage", this);
  messageTextField_->setWordWrap(true);

  auto* layout = new QHBoxLayout(this);
  layout->setContentsMargins(kSideMargin, 0, kSideMargin, 0);
  layout->setSpacing(16);
  layout->addWidget(picture);
  layout->addWidget(messageTextField_, 1);
}

void MessageView::setMessage(const QString& text) {
  setFieldText(*messageTextField_, text);
}

QString MessageView::message() const {
  return messageTextField_->text();
}

}  // namespace kelvane
