// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <string>
#include <vector>

namespace kelvane::userfs {

/// What the option strings of a mount ask for.
struct MountOptions {
  std::string volumeName;              ///< "volname=%@"
  bool remembersMissingNames = false;  ///< "negative_vncache"
  std::vector<std::string> passedOn;   ///< What libfuse has to understand.
};

MountOptions parseMountOptions(const std::vector<std::string>& options);

/// The argument list for libfuse: a program name, then "-o" and an option each.
std::vector<std::string> libfuseArguments(const MountOptions& options);

}  // namespace kelvane::userfs
