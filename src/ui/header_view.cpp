// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/header_view.h"

#include "ui/animate_text_field.h"
#include "ui/view_parts.h"
#include "ui/window_metrics.h"

namespace kelvane {

HeaderView::HeaderView(QWidget* parent) : QWidget(parent) {
  setObjectName(QStringLiteral("headerBackground"));
  headerLineTextField_ = new AnimateTextField(localizedText("headerDisksAvail"), this);
  headerLineTextField_->setObjectName(QStringLiteral("headerLineTextField"));
  headerLineTextField_->setAccessibleDescription(localizedText("AccessibleHeader"));
  // As wide as its background, the field is out of sight when it has moved by its own width.
  headerLineTextField_->setContentsMargins(kSideMargin, 0, kSideMargin, 0);
  QFont bold = headerLineTextField_->font();
  bold.setBold(true);
  headerLineTextField_->setFont(bold);
}

void HeaderView::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  headerLineTextField_->setRestingFrame(rect());
}

}  // namespace kelvane
