// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QString>

class QLabel;
class QWidget;

namespace kelvane {

/// A label of that width, in points, which takes as many lines as its text needs. Set its text by
/// `setParagraph`. The parent owns it.
QLabel* makeParagraph(const QString& text, double width, QWidget* parent);

/// Sets the text, and with it the height. (Where a wrapped label leaves its height to the layouts,
/// these ask for that of all the width there is, which it does not take, and cut its end.)
void setParagraph(QLabel& label, const QString& text);

}  // namespace kelvane
