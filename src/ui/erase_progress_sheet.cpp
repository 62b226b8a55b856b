// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/erase_progress_sheet.h"

#include <QCloseEvent>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QVBoxLayout>
#include <cmath>

#include "platform/foundation/system_log.h"
#include "ui/alert_sheet.h"
#include "ui/view_parts.h"
#include "ui/window_metrics.h"

namespace kelvane {
namespace {

constexpr double kBarWidth = 300;
// Steps of the bar, fine enough that every pixel of it is used.
constexpr int kSteps = 1000;

}  // namespace

EraseProgressSheet::EraseProgressSheet(QWidget* parent) : QDialog(parent) {
  setObjectName(QStringLiteral("eraseProgressPanel"));
  setWindowModality(Qt::WindowModal);
  setWindowTitle(QGuiApplication::applicationDisplayName());
  setWindowFlag(Qt::WindowCloseButtonHint, false);

  descriptionField_ = makeTextField("eraseDescriptionField", "AccessibleEraseMessage", this);
  QFont bold = font();
  bold.setBold(true);
  descriptionField_->setFont(bold);
  progressBar_ = new QProgressBar(this);
  progressBar_->setObjectName(QStringLiteral("eraseProgressIndicator"));
  progressBar_->setAccessibleName(localizedText("AccessibleEraseProgress"));
  progressBar_->setTextVisible(false);
  progressBar_->setFixedWidth(toPixels(kBarWidth, font()));
  remainingField_ = makeTextField("eraseRemainingField", "AccessibleRemainingTime", this);
  // Its line stays free, or the sheet would grow when there is something to tell.
  remainingField_->setMinimumHeight(remainingField_->fontMetrics().height());

  auto* column = new QVBoxLayout;
  column->setSpacing(10);
  column->addStretch();
  column->addWidget(descriptionField_);
  column->addWidget(progressBar_);
  column->addWidget(remainingField_);
  column->addStretch();
  auto* body = new QHBoxLayout(this);
  body->setContentsMargins(20, 20, 20, 20);
  body->setSpacing(16);
  body->addWidget(makeDiscPicture(Shade::Full, this));
  body->addLayout(column);
  body->setSizeConstraint(QLayout::SetFixedSize);
}

void EraseProgressSheet::reject() {
  if (!isErasing()) QDialog::reject();
}

void EraseProgressSheet::closeEvent(QCloseEvent* event) {
  event->setAccepted(!isErasing());
}

void EraseProgressSheet::showBeginning(const std::string& description) {
  const QString text = QString::fromStdString(description);
  setFieldText(*descriptionField_, text);
  setAccessibleName(text);
  remainingTime_.beginWithNext();
  showFraction(std::nullopt);
  open();
}

// Without a fraction the bar moves with no end in sight.
void EraseProgressSheet::showFraction(std::optional<double> fraction) {
  progressBar_->setRange(0, fraction ? kSteps : 0);
  if (fraction) progressBar_->setValue(static_cast<int>(std::lround(*fraction * kSteps)));
  setFieldText(*remainingField_, fraction ? remainingTime_.textAt(*fraction) : QString());
  Q_EMIT percentChanged(fraction ? static_cast<int>(100 * *fraction) : -1);
}

void EraseProgressSheet::showEnd(const std::string& error) {
  Q_EMIT percentChanged(-1);
  done(error.empty() ? QDialog::Accepted : QDialog::Rejected);
  if (error.empty()) return;
  systemLog("erasing failed: %@", error);
  openAlertSheet(parentWidget(),
                 {.style = Alert::Style::Warning,
                  .buttonKeys = {"OK"},
                  .messageKey = "EraseError",
                  .informativeKey = "EraseErrorLong",
                  .detail = error},
                 {});
}

}  // namespace kelvane
