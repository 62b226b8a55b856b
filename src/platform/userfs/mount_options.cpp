// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/userfs/mount_options.h"

#include <string_view>

namespace kelvane::userfs {
namespace {

constexpr std::string_view kVolumeName = "volname=";
constexpr std::string_view kVolumeIcon = "volicon=";

// Neither asks for anything here: every file system of ours is local and stays in this process.
bool asksForNothing(std::string_view option) {
  return option == "local" || option == "-f" || option.starts_with(kVolumeIcon);
}

// In libfuse's option lists a comma ends an option, unless a backslash stands before it.
std::string escaped(std::string_view value) {
  std::string result;
  for (const char character : value) {
    if (character == ',' || character == '\\') result += '\\';
    result += character;
  }
  return result;
}

}  // namespace

MountOptions parseMountOptions(const std::vector<std::string>& options) {
  MountOptions parsed;
  for (const std::string& option : options) {
    if (option.starts_with(kVolumeName)) {
      parsed.volumeName = option.substr(kVolumeName.size());
    } else if (option == "negative_vncache") {
      parsed.remembersMissingNames = true;
    } else if (!asksForNothing(option)) {
      parsed.passedOn.push_back(option);
    }
  }
  return parsed;
}

std::vector<std::string> libfuseArguments(const MountOptions& options) {
  const std::string source = options.volumeName.empty() ? "kelvanefs" : options.volumeName;
  std::vector<std::string> arguments = {"kelvanefs", "-o", "fsname=" + escaped(source), "-o",
                                        "subtype=kelvanefs"};
  for (const std::string& option : options.passedOn) {
    arguments.insert(arguments.end(), {"-o", option});
  }
  return arguments;
}

}  // namespace kelvane::userfs
