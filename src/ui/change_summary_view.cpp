// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/change_summary_view.h"

#include <QFormLayout>
#include <QLabel>

#include "platform/foundation/placeholders.h"
#include "platform/foundation/strings_table.h"
#include "ui/amount_texts.h"
#include "ui/view_parts.h"

namespace kelvane {
namespace {

QString itemsText(const BurnSummary::Items& items) {
  if (items.files == 0 && items.folders == 0) return {};
  return kelvane::itemsText(items.files, items.folders);
}

QString bytesText(const BurnSummary::Bytes& bytes) {
  const QString text = kelvane::bytesText(bytes.bytes);
  if (bytes.certainty == BurnSummary::Certainty::Exact) return text;
  return QString::fromStdString(format(localizedString("SummaryAbout"), text.toStdString()));
}

QLabel* makePlainLabel(const QString& text, QWidget* parent) {
  auto* label = new QLabel(text, parent);
  label->setTextFormat(Qt::PlainText);
  return label;
}

}  // namespace

ChangeSummaryView::ChangeSummaryView(QWidget* parent)
    : QFrame(parent), rows_(new QFormLayout(this)) {
  setObjectName(QStringLiteral("changeSummary"));
  setAccessibleName(localizedText("Summary"));
  setFrameShape(QFrame::StyledPanel);
  rows_->setContentsMargins(10, 8, 10, 8);
  rows_->setVerticalSpacing(3);
  looking_ = makePlainLabel(localizedText("SummaryLooking"), this);
  looking_->setObjectName(QStringLiteral("summaryLooking"));
  rows_->addRow(looking_);
  added_ = makeRow("summaryAdded", "SummaryAdded");
  replaced_ = makeRow("summaryReplaced", "SummaryReplaced");
  renamed_ = makeRow("summaryRenamed", "SummaryRenamed");
  deleted_ = makeRow("summaryDeleted", "SummaryDeleted");
  needed_ = makeRow("summaryNeeded", "SummaryNeeded");
  left_ = makeRow("summaryLeft", "SummaryLeft");
  setSummary({});
}

ChangeSummaryView::Row ChangeSummaryView::makeRow(const char* name, const char* key) {
  const Row row{makePlainLabel(localizedText(key), this), makePlainLabel({}, this)};
  row.value->setObjectName(QLatin1String(name));
  rows_->addRow(row.label, row.value);
  return row;
}

void ChangeSummaryView::show(const Row& row, const QString& text) {
  rows_->setRowVisible(row.value, !text.isEmpty());
  row.value->setText(text);
  row.value->setAccessibleName(row.label->text() + QLatin1Char(' ') + text);
}

void ChangeSummaryView::setSummary(const BurnSummary& summary) {
  const BurnSummary::Changes changes = summary.changes.value_or(BurnSummary::Changes());
  rows_->setRowVisible(looking_, !summary.changes);
  show(added_, itemsText(changes.added));
  show(replaced_, itemsText(changes.replaced));
  show(renamed_, itemsText(changes.renamed));
  show(deleted_, itemsText(changes.deleted));
  show(needed_, summary.needed ? bytesText(*summary.needed) : QString());
  const bool fits = summary.freeAfterwards && summary.freeAfterwards->bytes >= 0;
  show(left_, fits ? bytesText(*summary.freeAfterwards) : QString());
}

}  // namespace kelvane
