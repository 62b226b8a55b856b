// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <string>

namespace kelvane {

/// Why nothing is done with the item at `path`, in the user's language: another user may have put
/// it there, or it is missing.
std::string reasonForeignItem(const std::string& path);

/// Why a session is not built, in the user's language: what was deleted would be there again.
std::string reasonHideListNotWritten(const std::string& path);

}  // namespace kelvane
