// SPDX-License-Identifier: GPL-2.0-or-later
#include "burn/mkisofs_arguments.h"

namespace kelvane {
namespace {

constexpr char kNoSession[] = "0";

void append(std::vector<std::string>& arguments, std::vector<std::string> more) {
  arguments.insert(arguments.end(), more.begin(), more.end());
}

}  // namespace

std::vector<std::string> mkisofsArguments(const SessionImageRequest& request) {
  const bool continues = request.sessionString != kNoSession;
  std::vector<std::string> arguments;
  if (continues) {
    append(arguments,
           {"-hide-list", request.hideListPath, "-hide-joliet-list", request.hideListPath});
  }
  append(arguments, {"-quiet", "-D", "-r", "-J", "-joliet-long", "-input-charset", "utf-8", "-V",
                     request.volumeName, "-o", request.imagePath});
  if (continues) append(arguments, {"-M", request.deviceName, "-C", request.sessionString});
  append(arguments, {request.tmpDirPath});
  return arguments;
}

}  // namespace kelvane
