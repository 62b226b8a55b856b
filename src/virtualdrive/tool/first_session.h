// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <filesystem>
#include <string>

#include "virtualdrive/virtual_drive.h"

namespace kelvane::virtualdrive::tool {

/// Writes the content of a folder as the first session of a blank disc, which stays appendable.
/// Ends early, with an error, on SIGINT, SIGTERM and SIGHUP.
bool writeFirstSession(const VirtualDrive& drive, const std::filesystem::path& folder,
                       const std::string& label, std::string* error);

}  // namespace kelvane::virtualdrive::tool
