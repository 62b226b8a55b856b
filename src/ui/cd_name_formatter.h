// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QString>

namespace kelvane {

/// The rules for the name that the user gives a disc: at most 16 characters, letters and digits
/// without accents, and "_ -.+".
class CDNameFormatter {
 public:
  /// Whether an edit that leads to `partialString`, with the caret at `proposedCaret`, is let
  /// through. Only the character before the caret, the one just typed, is tested: pasted ones
  /// further to the left pass.
  bool isPartialStringValid(const QString& partialString, qsizetype proposedCaret) const;

  /// What the field shows for a value.
  QString stringForObjectValue(const QString& value) const;

  /// The value of what the field shows; never empty.
  QString objectValueForString(const QString& string) const;
};

}  // namespace kelvane
