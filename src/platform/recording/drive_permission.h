// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <string>

namespace kelvane {

/// Why this user may not write with the drive at `node` ("/dev/sr0"), in sentences for the user
/// that name the group or rule that gives the access; empty where nothing is in the way.
std::string whyDriveIsClosed(const std::string& node);

}  // namespace kelvane
