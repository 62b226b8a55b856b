// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/warning_box.h"

#include <QAccessible>
#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QStyle>
#include <QVBoxLayout>

#include "ui/paragraph.h"
#include "ui/view_parts.h"
#include "ui/window_metrics.h"

namespace kelvane {
namespace {

constexpr double kIconSize = 24;
constexpr double kTextWidth = 296;

}  // namespace

WarningBox::WarningBox(const char* name, QWidget* parent)
    : QWidget(parent),
      message_(makeParagraph({}, kTextWidth, this)),
      explanation_(makeParagraph({}, kTextWidth, this)) {
  setObjectName(QLatin1String(name));
  QFont bold = font();
  bold.setBold(true);
  message_->setFont(bold);
  auto* icon = new QLabel(this);
  const int side = toPixels(kIconSize, font());
  icon->setPixmap(style()->standardIcon(QStyle::SP_MessageBoxWarning).pixmap(side, side));
  icon->setAccessibleName(localizedText("AccessibleWarning"));

  auto* texts = new QVBoxLayout;
  texts->setSpacing(3);
  texts->addWidget(message_, 0, Qt::AlignLeading);
  texts->addWidget(explanation_, 0, Qt::AlignLeading);
  auto* row = new QHBoxLayout(this);
  row->setContentsMargins(0, 0, 0, 0);
  row->setSpacing(10);
  row->addWidget(icon, 0, Qt::AlignTop);
  row->addLayout(texts);
  row->addStretch();
  hide();
}

void WarningBox::setWarning(const QString& message, const QString& explanation) {
  const bool isNews = message_->text() != message || explanation_->text() != explanation;
  setParagraph(*message_, message);
  setParagraph(*explanation_, explanation);
  setAccessibleName(message);
  setAccessibleDescription(explanation);
  setHidden(message.isEmpty());
  // What is around it learns its new height at once, and not when it changes the next time.
  layout()->activate();
  updateGeometry();
  if (message.isEmpty() || !isNews) return;
  QAccessibleEvent alert(this, QAccessible::Alert);
  QAccessible::updateAccessibility(&alert);
  Q_EMIT appeared();
}

}  // namespace kelvane
