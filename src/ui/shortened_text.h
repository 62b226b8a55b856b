// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QString>

namespace kelvane {

/// `text`, where it has no more than `longest` UTF-16 units; otherwise its beginning, no longer
/// than that and made of whole characters, with an ellipsis.
QString shortened(const QString& text, qsizetype longest);

/// A name of a file or folder, short enough to be quoted in a sentence.
QString shortenedName(const QString& name);

}  // namespace kelvane
