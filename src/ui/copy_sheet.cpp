// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/copy_sheet.h"

#include <QCloseEvent>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QTimer>
#include <QVBoxLayout>
#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>

#include "platform/foundation/placeholders.h"
#include "platform/foundation/strings_table.h"
#include "ui/amount_texts.h"
#include "ui/copy_report.h"
#include "ui/elided_label.h"
#include "ui/roomy_button.h"
#include "ui/view_parts.h"
#include "ui/window_metrics.h"

namespace kelvane {
namespace {

constexpr double kWidth = 320;
constexpr int kSteps = 1000;
constexpr std::chrono::milliseconds kRefreshInterval{100};

double fractionOf(const CopyProgress& progress) {
  const bool hasBytes = progress.bytesInAll > 0;
  const uint64_t all = hasBytes ? progress.bytesInAll : progress.filesInAll;
  const uint64_t done = hasBytes ? progress.bytes : progress.files;
  if (all == 0) return 0;
  return std::min(1.0, static_cast<double>(done) / static_cast<double>(all));
}

}  // namespace

CopySheet::CopySheet(QWidget* parent) : QDialog(parent) {
  setObjectName(QStringLiteral("copyPanel"));
  setWindowModality(Qt::WindowModal);
  setWindowTitle(QGuiApplication::applicationDisplayName());
  setAccessibleName(localizedText("Copying"));
  nameField_ = new ElidedLabel(this);
  nameField_->setObjectName(QStringLiteral("copyNameField"));
  QFont bold = font();
  bold.setBold(true);
  nameField_->setFont(bold);
  progressBar_ = new QProgressBar(this);
  progressBar_->setObjectName(QStringLiteral("copyProgressIndicator"));
  progressBar_->setAccessibleName(localizedText("AccessibleCopyProgress"));
  progressBar_->setTextVisible(false);
  progressBar_->setFixedWidth(toPixels(kWidth, font()));
  amountField_ = makeTextField("copyAmountField", "AccessibleCopyAmount", this);
  remainingField_ = makeTextField("copyRemainingField", "AccessibleRemainingTime", this);
  cancelButton_ = makeButton("copyCancelButton", "Cancel", this);
  connect(cancelButton_, &RoomyButton::clicked, this, [this] { reject(); });
  refresh_ = new QTimer(this);
  connect(refresh_, &QTimer::timeout, this, [this] { showProgress(); });

  auto* bottom = new QHBoxLayout;
  bottom->addWidget(remainingField_, 1);
  bottom->addWidget(cancelButton_);
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(20, 20, 20, 16);
  column->setSpacing(8);
  column->addWidget(nameField_);
  column->addWidget(progressBar_);
  column->addWidget(amountField_);
  column->addLayout(bottom);
  column->setSizeConstraint(QLayout::SetFixedSize);
}

// The window that hears of the copy may be half gone by now.
CopySheet::~CopySheet() {
  blockSignals(true);
  cancelAndWait();
}

void CopySheet::begin(const CopyRequest& request) {
  stop_ = std::stop_source();
  answerForAll_.reset();
  progress_ = {};
  cancelButton_->setEnabled(true);
  remainingTime_.begin();
  setFieldText(*remainingField_, {});
  showProgress();
  open();
  refresh_->start(kRefreshInterval);
  thread_ = std::thread([this, request, stop = stop_.get_token(), run = ++run_] {
    const CopyOutcome outcome = copyInto(request, *this, stop);
    QMetaObject::invokeMethod(
        this,
        [this, outcome, run] {
          if (run == run_ && isCopying()) end(outcome);
        },
        Qt::QueuedConnection);
  });
}

void CopySheet::cancelAndWait() {
  if (!isCopying()) return;
  stop_.request_stop();
  thread_.join();
  refresh_->stop();
  closeQuestion();
  done(QDialog::Rejected);
  Q_EMIT percentChanged(-1);
}

void CopySheet::reject() {
  stop_.request_stop();
  cancelButton_->setEnabled(false);
  setFieldText(*remainingField_, localizedText("CopyCancelling"));
}

void CopySheet::closeEvent(QCloseEvent* event) {
  event->ignore();
  reject();
}

void CopySheet::progressed(const CopyProgress& progress) {
  const std::lock_guard guard(mutex_);
  progress_ = progress;
}

std::optional<ConflictAnswer> CopySheet::ask(const CopyConflict& conflict) {
  if (answerForAll_ && (*answerForAll_ != ConflictAnswer::Replace || conflict.canReplace)) {
    return answerForAll_;
  }
  std::unique_lock lock(mutex_);
  hasAnswer_ = false;
  QMetaObject::invokeMethod(
      this,
      [this, conflict] {
        if (!stop_.stop_requested()) showQuestion(conflict);
      },
      Qt::QueuedConnection);
  if (!answered_.wait(lock, stop_.get_token(), [this] { return hasAnswer_; })) return std::nullopt;
  if (scope_ == CopyQuestionScope::All) answerForAll_ = answer_;
  return answer_;
}

void CopySheet::showQuestion(const CopyConflict& conflict) {
  question_ = openCopyQuestion(
      this, conflict, [this](std::optional<ConflictAnswer> given, CopyQuestionScope scope) {
        question_ = nullptr;
        answer(given, scope);
      });
}

void CopySheet::answer(std::optional<ConflictAnswer> given, CopyQuestionScope scope) {
  const std::lock_guard guard(mutex_);
  answer_ = given;
  scope_ = scope;
  hasAnswer_ = true;
  answered_.notify_all();
}

// Without asking on: nobody waits for the answer any more.
void CopySheet::closeQuestion() {
  if (QDialog* question = std::exchange(question_, nullptr)) {
    question->disconnect(this);
    delete question;
  }
}

void CopySheet::showProgress() {
  CopyProgress progress;
  {
    const std::lock_guard guard(mutex_);
    progress = progress_;
  }
  const bool isKnown = progress.filesInAll > 0;
  progressBar_->setRange(0, isKnown ? kSteps : 0);
  if (!isKnown) {
    nameField_->setText(localizedText("CopyLooking"));
    setFieldText(*amountField_, QStringLiteral(" "));
    Q_EMIT percentChanged(-1);
    return;
  }
  const double fraction = fractionOf(progress);
  progressBar_->setValue(static_cast<int>(std::lround(fraction * kSteps)));
  nameField_->setText(QString::fromStdString(format(localizedString("CopyName"), progress.name)));
  const std::string amount =
      format(localizedString("CopyAmount"), std::to_string(progress.files),
             filesText(progress.filesInAll).toStdString(),
             bytesText(static_cast<int64_t>(progress.bytes)).toStdString(),
             bytesText(static_cast<int64_t>(progress.bytesInAll)).toStdString());
  setFieldText(*amountField_, QString::fromStdString(amount));
  if (!stop_.stop_requested()) setFieldText(*remainingField_, remainingTime_.textAt(fraction));
  Q_EMIT percentChanged(static_cast<int>(100 * fraction));
}

void CopySheet::end(const CopyOutcome& outcome) {
  thread_.join();
  refresh_->stop();
  closeQuestion();
  done(QDialog::Accepted);
  Q_EMIT percentChanged(-1);
  reportCopy(parentWidget(), outcome);
}

}  // namespace kelvane
