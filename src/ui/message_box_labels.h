// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

class QMessageBox;

namespace kelvane {

/// Makes the labels of a message box those of this application, once its texts and its icon are
/// set: the message stands out, no text is taken for markup, and the icon has a name to be spoken.
void adaptLabels(QMessageBox& box);

}  // namespace kelvane
