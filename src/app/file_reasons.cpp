// SPDX-License-Identifier: GPL-2.0-or-later
#include "app/file_reasons.h"

#include "platform/foundation/placeholders.h"
#include "platform/foundation/strings_table.h"

namespace kelvane {

std::string reasonForeignItem(const std::string& path) {
  return format(localizedString("ReasonForeignItem",
                                "%@ is somebody else's, or not what KelvaneFS needs there."),
                path);
}

std::string reasonHideListNotWritten(const std::string& path) {
  return format(localizedString("ReasonHideListNotWritten",
                                "The list of deleted files, %@, could not be written."),
                path);
}

}  // namespace kelvane
