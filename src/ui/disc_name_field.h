// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

class QLineEdit;
class QWidget;

namespace kelvane {

/// A field for the name that the user gives a disc, by the rules of CDNameFormatter.
///
/// Edits are what the rules are for: a name that is set is kept as it is, whatever it holds, and
/// can be shortened from there. The parent owns the field.
QLineEdit* makeDiscNameField(QWidget* parent);

}  // namespace kelvane
