// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <string>
#include <vector>

#include "platform/volumes/mount_table.h"

namespace kelvane {

/// Where the desktop has mounted discs of real drives ("/dev/sr0") by itself: the mount points of
/// their volumes, of whatever type, in the order of the table, except those below
/// `volumesDirectory`, which are found by listing it, and `hiddenMountPoint`, which nobody is to
/// see.
std::vector<std::string> desktopDiscMounts(const std::vector<MountTableLine>& table,
                                           const std::string& volumesDirectory,
                                           const std::string& hiddenMountPoint);

}  // namespace kelvane
