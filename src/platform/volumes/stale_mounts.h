// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <string>
#include <vector>

#include "platform/volumes/mount_points_lock.h"
#include "platform/volumes/mount_table.h"

namespace kelvane {

/// Where the application mounts.
struct OwnMountPoints {
  std::string volumesDirectory;
  std::string overlayMountPoint;
  std::string hiddenMountPoint;
};

/// Where that is on this machine, as the mount table writes it.
OwnMountPoints ownMountPoints();

/// The lines of `table` that an instance of this application has mounted, the last mount first:
/// user-space file systems at the overlay's and the hidden mount point, and user-space ISO-9660
/// volumes right below the folder of visible volumes.
std::vector<MountTableLine> ownMounts(const std::vector<MountTableLine>& table,
                                      const OwnMountPoints& points);

/// Unmounts one of those, whether it is in use or not, and removes its folder, except that of the
/// hidden mount, which stays. Gives the status as unmountAtPath does.
int removeOwnMount(const MountTableLine& mount, const OwnMountPoints& points);

/// Unmounts what an instance that was killed has left mounted, and removes the folders of its
/// visible volumes. Called at start, before anything is mounted: that no other instance runs is
/// what the lock proves, so whatever is mounted there has no owner.
void cleanUpStaleMounts(const MountPointsLock& lock);

}  // namespace kelvane
