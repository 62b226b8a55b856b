// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <filesystem>
#include <string>

#include "virtualdrive/tool/stop_signals.h"
#include "virtualdrive/virtual_drive.h"

namespace kelvane::virtualdrive::tool {

/// Writes the content of a folder as the first session of a blank disc, which stays appendable.
/// Ends early, with an error, when `stop` asks for it.
bool writeFirstSession(const VirtualDrive& drive, const std::filesystem::path& folder,
                       const std::string& label, const StopSignals& stop, std::string* error);

}  // namespace kelvane::virtualdrive::tool
