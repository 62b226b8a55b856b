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
  progressIndicator_ = new BurnProgressBar(this);
  progressIndicator_->setObjectName(QStringLiteral("burnProgressIndicator"));
  progressIndicator_->setAccessibleName(localizedText("AccessibleBurnProgress"));
  connect(progressIndicator_, &BurnProgressBar::percentChanged, this, &KVBurnView::showPercent);

  auto* line = new QHBoxLayout;
  line->addWidget(messageTextField_, 1);
  line->addWidget(percentField_);

  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(kSideMargin, 0, kSideMargin, 0);
  layout->setSpacing(8);
  layout->addStretch();
  layout->addLayout(line);
  layout->addWidget(progressIndicator_);
  layout->addStretch();
}

void KVBurnView::showPercent(int percent) {
  if (percent < 0) {
    percentField_->clear();
    return;
  }
  percentField_->setText(QString::fromStdString(format(localizedString("BurnPercent"), percent)));
}

}  // namespace kelvane
