// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QString>
#include <QStringList>
#include <cstdint>

namespace kelvane {

/// A number of bytes for the user, in megabytes of 1048576 bytes as everywhere in the application,
/// or in kilobytes below a tenth of one: "412 MB", "3.2 MB", "12 KB". Of a negative number the
/// amount.
QString bytesText(int64_t bytes);

/// "1 file", "12 files".
QString filesText(uint64_t count);
/// "1 folder", "12 folders".
QString foldersText(uint64_t count);
/// "12 files, 1 folder"; without what there is none of. Of nothing at all, "0 files".
QString itemsText(uint64_t files, uint64_t folders);

/// Names in quotation marks, one after the other: the first few, and how many more there are.
QString namesText(const QStringList& names);

}  // namespace kelvane
