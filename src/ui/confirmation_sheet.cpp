// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/confirmation_sheet.h"

#include <QComboBox>
#include <QFormLayout>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>
#include <vector>

#include "platform/foundation/placeholders.h"
#include "platform/foundation/strings_table.h"
#include "ui/alert_sheet.h"
#include "ui/burn_summary.h"
#include "ui/cd_name_formatter.h"
#include "ui/change_summary_view.h"
#include "ui/disc_name_field.h"
#include "ui/paragraph.h"
#include "ui/roomy_button.h"
#include "ui/summary_warnings.h"
#include "ui/view_parts.h"
#include "ui/warning_box.h"

namespace kelvane {
namespace {

constexpr double kTextWidth = 330;

}  // namespace

ConfirmationSheet::ConfirmationSheet(QWidget* parent) : QDialog(parent) {
  setObjectName(QStringLiteral("burnConfirmationPanel"));
  setWindowModality(Qt::WindowModal);
  setWindowTitle(QGuiApplication::applicationDisplayName());
  auto* question = makeParagraph({}, kTextWidth, this);
  QFont bold = font();
  bold.setBold(true);
  question->setFont(bold);
  setParagraph(*question, localizedText("BurnConfirmation"));
  auto* explanation = makeParagraph(localizedText("BurnConfirmationLong"), kTextWidth, this);
  setAccessibleName(question->text());
  setAccessibleDescription(explanation->text());
  summary_ = new ChangeSummaryView(this);
  problem_ = new WarningBox("problemWarning", this);
  tooLarge_ = new WarningBox("tooLargeWarning", this);
  hiddenToo_ = new WarningBox("hiddenTooWarning", this);
  shownStill_ = new WarningBox("shownStillWarning", this);

  auto* column = new QVBoxLayout;
  column->setSpacing(10);
  column->addWidget(question);
  column->addWidget(explanation);
  column->addWidget(summary_);
  for (WarningBox* warning : {problem_, tooLarge_, hiddenToo_, shownStill_}) {
    column->addWidget(warning);
  }
  column->addLayout(makeFields());

  auto* body = new QHBoxLayout;
  body->setSpacing(16);
  body->addWidget(makeDiscPicture(Shade::Full, this), 0, Qt::AlignTop);
  body->addLayout(column);

  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(20, 20, 20, 16);
  layout->setSpacing(18);
  layout->addLayout(body);
  layout->addLayout(makeButtons());
  layout->setSizeConstraint(QLayout::SetFixedSize);
}

QLayout* ConfirmationSheet::makeFields() {
  diskTitle_ = makeDiscNameField(this);
  diskTitle_->setObjectName(QStringLiteral("burnConfirmationPanelDiskTitle"));
  speedPopup_ = new QComboBox(this);
  speedPopup_->setObjectName(QStringLiteral("burnSpeedPopupButton"));
  speedPopup_->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
  setSpeeds({});

  auto* form = new QFormLayout;
  form->setFieldGrowthPolicy(QFormLayout::ExpandingFieldsGrow);
  form->setContentsMargins(0, 4, 0, 0);
  for (const auto& [key, field] :
       {std::pair<const char*, QWidget*>{"BurnConfirmationName", diskTitle_},
        std::pair<const char*, QWidget*>{"BurnConfirmationSpeed", speedPopup_}}) {
    const QString label = localizedText(key);
    form->addRow(label, field);
    const QString name = withoutMnemonicMark(label);
    field->setAccessibleName(name.endsWith(QLatin1Char(':')) ? name.chopped(1) : name);
  }
  return form;
}

QLayout* ConfirmationSheet::makeButtons() {
  burnButton_ = makeButton("burnConfirmButton", "BurnConfirmationBurn", this);
  burnButton_->setDefault(true);
  discardButton_ = makeButton("burnCancelButton", "BurnConfirmationDiscard", this);
  keepButton_ = makeButton("burnKeepButton", "BurnConfirmationKeep", this);
  keepButton_->setToolTip(localizedText("BurnConfirmationKeepLong"));
  keepButton_->setAccessibleDescription(localizedText("BurnConfirmationKeepLong"));
  connect(keepButton_, &RoomyButton::clicked, this, [this] {
    if (kept_) kept_();
  });
  connect(burnButton_, &RoomyButton::clicked, this, [this] {
    if (confirmed_) confirmed_();
  });
  connect(discardButton_, &RoomyButton::clicked, this, [this] {
    if (cancelled_) cancelled_();
  });

  auto* row = new QHBoxLayout;
  row->addStretch();
  row->addWidget(discardButton_);
  row->addWidget(keepButton_);
  row->addWidget(burnButton_);
  return row;
}

void ConfirmationSheet::setDiskTitle(const QString& volumeName) {
  diskTitle_->setText(volumeName);
}

QString ConfirmationSheet::diskTitle() const {
  return CDNameFormatter().objectValueForString(diskTitle_->text());
}

void ConfirmationSheet::setSpeeds(std::span<const int32_t> multiples) {
  speedPopup_->clear();
  speedPopup_->addItem(localizedText("SpeedMaximum"), 0);
  for (const int32_t multiple : multiples) {
    const std::string text = format(localizedString("SpeedMultiple"), multiple);
    speedPopup_->addItem(QString::fromStdString(text), multiple);
  }
}

int32_t ConfirmationSheet::speedTag() const {
  return speedPopup_->currentData().toInt();
}

void ConfirmationSheet::setSummary(const BurnSummary& summary) {
  summary_->setSummary(summary);
  showWarnings(summary);
  const bool isBoundToFail = summary.isTooLarge() || !summary.problem.empty();
  keepButton_->setVisible(summary.warns());
  keepButton_->setDefault(isBoundToFail);
  burnButton_->setDefault(!isBoundToFail);
}

void ConfirmationSheet::showWarnings(const BurnSummary& summary) {
  const std::vector<std::pair<WarningBox*, SummaryWarning::About>> boxes = {
      {problem_, SummaryWarning::About::Problem},
      {tooLarge_, SummaryWarning::About::Size},
      {hiddenToo_, SummaryWarning::About::Hidden},
      {shownStill_, SummaryWarning::About::ShownStill}};
  const std::vector<SummaryWarning> warnings = warningsOf(summary);
  for (const auto& [box, subject] : boxes) {
    const auto found = std::ranges::find(warnings, subject, &SummaryWarning::about);
    if (found == warnings.end()) {
      box->setWarning({}, {});
    } else {
      box->setWarning(found->message, found->explanation);
    }
  }
}

void ConfirmationSheet::begin() {
  setSummary({});
  open();
  diskTitle_->selectAll();
  diskTitle_->setFocus(Qt::OtherFocusReason);
}

void ConfirmationSheet::reject() {
  if (question_) return;
  const Alert question{.style = Alert::Style::Warning,
                       .buttonKeys = {"BurnConfirmationDiscard", "DiscardChangesKeep"},
                       .messageKey = "DiscardChanges",
                       .informativeKey = "DiscardChangesLong",
                       .detail = {}};
  question_ = openAlertSheet(this, question, [this](int returnCode) {
    question_ = nullptr;
    if (returnCode == kAlertFirstButtonReturn && cancelled_) cancelled_();
  });
}

// The changes in question have gone with the sheet, and the next one is about those of another
// disc.
void ConfirmationSheet::done(int result) {
  if (question_) {
    question_->disconnect(this);
    delete question_;
  }
  QDialog::done(result);
}

}  // namespace kelvane
