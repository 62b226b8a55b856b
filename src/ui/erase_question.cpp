// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/erase_question.h"

#include <QDialog>

#include "ui/media_controller.h"

namespace kelvane {

EraseQuestion::EraseQuestion(MediaController& discs, QObject* parent)
    : QObject(parent), discs_(discs) {}

void EraseQuestion::follow(QDialog* question, std::optional<size_t> rowBefore) {
  question_ = question;
  asked_ = discInRow(discs_.selectionIndex());
  rowBefore_ = rowBefore;
  discBefore_ = discInRow(rowBefore);
  // Behind the one who acts on the answer, and who needs the selection for that.
  connect(question, &QDialog::finished, this, [this] { giveSelectionBack(); });
}

void EraseQuestion::discsHaveChanged() {
  if (!question_) return;
  QMetaObject::invokeMethod(
      this, [this] { withdrawWhereItMeansAnother(); }, Qt::QueuedConnection);
}

// A disc that could not be asked who it is may be the one it was.
bool EraseQuestion::isSame(const Disc& one, const Disc& other) {
  if (one.drive != other.drive) return false;
  return one.identity.empty() || other.identity.empty() || one.identity == other.identity;
}

std::optional<EraseQuestion::Disc> EraseQuestion::discInRow(std::optional<size_t> row) const {
  const std::vector<DeviceRecord>& records = discs_.arrangedObjects();
  if (!row || *row >= records.size()) return std::nullopt;
  return Disc{records[*row].DRDevice, records[*row].mediaIdentity};
}

bool EraseQuestion::meansTheSameDisc() const {
  const std::optional<Disc> selected = discInRow(discs_.selectionIndex());
  return selected && asked_ && isSame(*selected, *asked_);
}

void EraseQuestion::withdrawWhereItMeansAnother() {
  if (question_ && !meansTheSameDisc()) question_->reject();
}

void EraseQuestion::giveSelectionBack() {
  question_.clear();
  if (!meansTheSameDisc()) return;
  const std::optional<Disc> now = discInRow(rowBefore_);
  const bool isStillThere = now && discBefore_ && isSame(*now, *discBefore_);
  if (!rowBefore_ || isStillThere) discs_.setSelectionIndex(rowBefore_);
}

}  // namespace kelvane
