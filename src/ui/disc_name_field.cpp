// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/disc_name_field.h"

#include <QLineEdit>
#include <QValidator>
#include <algorithm>

#include "ui/cd_name_formatter.h"

namespace kelvane {
namespace {

// The volume identifier of an ISO-9660 disc has this many characters (ECMA-119, 8.4.7).
constexpr int kLongestVolumeIdentifier = 32;

/// Whether `text` is what stays of `before` when a stretch of it is taken away.
bool isShortened(const QString& before, const QString& text) {
  if (text.size() >= before.size()) return false;
  const auto* rest = std::mismatch(text.begin(), text.end(), before.begin()).first;
  return before.endsWith(QStringView(rest, text.end()));
}

/// Judges the edits of a field. The field takes one back only if what stood there before was valid,
/// so whatever comes to stand there otherwise has to be.
class NameValidator : public QValidator {
 public:
  explicit NameValidator(QLineEdit* field) : QValidator(field), field_(*field) {
    connect(field, &QLineEdit::textChanged, this, [this](const QString& text) { before_ = text; });
  }

  State validate(QString& input, int& position) const override {
    const bool isJudged = isEdit() && input != before_ && !isShortened(before_, input);
    return !isJudged || formatter_.isPartialStringValid(input, position) ? Acceptable : Invalid;
  }

 private:
  // Behind a text that was set there is nothing to undo, and what was undone can be done again.
  bool isEdit() const { return field_.isUndoAvailable() && !field_.isRedoAvailable(); }

  QLineEdit& field_;
  QString before_;
  CDNameFormatter formatter_;
};

}  // namespace

QLineEdit* makeDiscNameField(QWidget* parent) {
  auto* field = new QLineEdit(parent);
  field->setMaxLength(kLongestVolumeIdentifier);
  field->setValidator(new NameValidator(field));
  field->setPlaceholderText(CDNameFormatter().stringForObjectValue({}));
  return field;
}

}  // namespace kelvane
