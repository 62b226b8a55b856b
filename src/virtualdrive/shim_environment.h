// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace kelvane::virtualdrive {

/// One variable of a program's environment.
struct EnvironmentVariable {
  std::string name;
  std::string value;
};

/// The device path under which a disc is shown where nothing else is asked for.
inline constexpr const char* kDefaultShownDevice = "/dev/sr0";

/// The variables that have to be set for a program so that it finds the disc in the folder `disc`
/// in the drive `device` (/dev/sr0 to /dev/sr31): the preloaded library kelvane-drive-shim.so in
/// the folder `libexec`, and what it shows. What this process has in LD_PRELOAD is kept behind it.
/// The tray is left as it is.
///
/// Empty, with a sentence in `error`, where the library is not there, its path holds a character
/// that the loader takes for the end of a path (space, colon), or `device` is no such path.
std::optional<std::vector<EnvironmentVariable>> shimEnvironment(
    const std::filesystem::path& libexec, const std::filesystem::path& disc,
    const std::string& device, std::string* error);

}  // namespace kelvane::virtualdrive
