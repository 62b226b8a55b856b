// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/foundation/executable_path.h"

#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace kelvane {

std::string executablePath() {
  if (const char* given = std::getenv("KELVANEFS_EXECUTABLE")) return given;
  std::error_code failure;
  return std::filesystem::read_symlink("/proc/self/exe", failure).string();
}

}  // namespace kelvane
