// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/volumes/desktop_mounts.h"

namespace kelvane {

std::vector<std::string> desktopDiscMounts(const std::vector<MountTableLine>& table,
                                           const std::string& volumesDirectory,
                                           const std::string& hiddenMountPoint) {
  std::vector<std::string> mountPoints;
  for (const MountTableLine& line : table) {
    if (!line.mountedFrom.starts_with("/dev/sr")) continue;
    if (line.mountedOn.starts_with(volumesDirectory + "/")) continue;
    if (line.mountedOn != hiddenMountPoint) mountPoints.push_back(line.mountedOn);
  }
  return mountPoints;
}

}  // namespace kelvane
