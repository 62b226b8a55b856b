// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/warning_box.h"

#include <QAccessible>
#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QStyle>
#include <QVBoxLayout>

#include "ui/view_parts.h"
#include "ui/window_metrics.h"

namespace kelvane {
namespace {

constexpr double kIconSize = 24;
constexpr double kTextWidth = 296;

QLabel* makeParagraph(QWidget* parent) {
  auto* label = new QLabel(parent);
  label->setTextFormat(Qt::PlainText);
  label->setWordWrap(true);
  label->setFixedWidth(toPixels(kTextWidth, parent->font()));
  return label;
}

}  // namespace

WarningBox::WarningBox(const char* name, QWidget* parent)
    : QWidget(parent), message_(makeParagraph(this)), explanation_(makeParagraph(this)) {
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
  texts->addWidget(message_);
  texts->addWidget(explanation_);
  auto* row = new QHBoxLayout(this);
  row->setContentsMargins(0, 0, 0, 0);
  row->setSpacing(10);
  row->addWidget(icon, 0, Qt::AlignTop);
  row->addLayout(texts, 1);
  hide();
}

void WarningBox::setWarning(const QString& message, const QString& explanation) {
  const bool isNews = message_->text() != message || explanation_->text() != explanation;
  message_->setText(message);
  explanation_->setText(explanation);
  setAccessibleName(message);
  setAccessibleDescription(explanation);
  setHidden(message.isEmpty());
  if (message.isEmpty() || !isNews) return;
  QAccessibleEvent appeared(this, QAccessible::Alert);
  QAccessible::updateAccessibility(&appeared);
}

}  // namespace kelvane
