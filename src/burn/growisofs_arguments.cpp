// SPDX-License-Identifier: GPL-2.0-or-later
#include "burn/growisofs_arguments.h"

#include "platform/foundation/placeholders.h"

namespace kelvane {

std::vector<std::string> growisofsArguments(const DVDBurnParameters& parameters) {
  const bool isFirstSession = parameters.burntoemptydisk == "YES";
  std::vector<std::string> arguments;
  if (parameters.burnSpeed != 0) arguments.push_back(format("-speed=%i", parameters.burnSpeed));
  arguments.insert(
      arguments.end(),
      {"-overburn", isFirstSession ? "-Z" : "-M", parameters.bsddevicepath, "-hide-list",
       parameters.hideFilePath, "-hide-joliet-list", parameters.hideFilePath, "-joliet-long", "-D",
       "-J", "-r", "-input-charset", "utf-8", "-use-the-force-luke=tty", "-V",
       parameters.dvdvolumename, parameters.sourcepath});
  return arguments;
}

}  // namespace kelvane
