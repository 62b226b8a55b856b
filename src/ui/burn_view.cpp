// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/burn_view.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

#include "platform/foundation/placeholders.h"
#include "platform/foundation/strings_table.h"
#include "ui/burn_progress_bar.h"
#include "ui/view_parts.h"
#include "ui/window_metrics.h"

namespace kelvane {

KVBurnView::KVBurnView(QWidget* parent) : QWidget(parent) {
  setObjectName(QStringLiteral("burnView"));
  setAccessibleName(localizedText("AccessibleBurnView"));
  messageTextField_ = makeTextField("burnMessageTextField", "AccessibleBurnMessage", this);
  percentField_ = makeTextField("burnPercentField", "AccessibleBurnProgress", this);
  percentField_->setAlignment(Qt::AlignTrailing | Qt::AlignVCenter);
  remainingField_ = makeTextField("burnRemainingField", "AccessibleRemainingTime", this);
  // Its line stays free, or the bar would move when there is something to tell.
  remainingField_->setMinimumHeight(remainingField_->fontMetrics().height());
  progressIndicator_ = new BurnProgressBar(this);
  progressIndicator_->setObjectName(QStringLiteral("burnProgressIndicator"));
  progressIndicator_->setAccessibleName(localizedText("AccessibleBurnProgress"));
  connect(progressIndicator_, &BurnProgressBar::percentChanged, this, &KVBurnView::showPercent);

  auto* line = new QHBoxLayout;
  line->addWidget(messageTextField_, 1);
  line->addWidget(percentField_);

  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(kSideMargin, 0, kSideMargin, 0);
  layout->setSpacing(6);
  layout->addStretch();
  layout->addLayout(line);
  layout->addWidget(progressIndicator_);
  layout->addWidget(remainingField_);
  layout->addStretch();
}

// How long the image of a CD takes says nothing of how long its burn will.
void KVBurnView::setMessage(const QString& text) {
  setFieldText(*messageTextField_, text);
  isWriting_ =
      text == localizedText("burningchangescd") || text == localizedText("burningchangesdvd");
  remainingTime_.beginWithNext();
  setFieldText(*remainingField_, {});
}

QString KVBurnView::remainingTimeText() {
  if (!isWriting_) return {};
  return remainingTime_.textAt(progressIndicator_->doubleValue() / BurnProgressBar::kMaximum);
}

void KVBurnView::showPercent(int percent) {
  if (percent < 0) {
    percentField_->clear();
    setFieldText(*remainingField_, {});
    return;
  }
  setFieldText(*remainingField_, remainingTimeText());
  percentField_->setText(QString::fromStdString(format(localizedString("BurnPercent"), percent)));
}

}  // namespace kelvane
