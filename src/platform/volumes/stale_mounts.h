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

/// The mount points in `table` at which an instance of this application has mounted something, the
/// last mount first: user-space file systems at the overlay's and the hidden mount point, and
/// user-space ISO-9660 volumes right below the folder of visible volumes.
std::vector<std::string> ownMounts(const std::vector<MountTableLine>& table,
                                   const OwnMountPoints& points);

/// Unmounts what an instance that was killed has left mounted, and removes the folders of its
/// visible volumes. Called at start, before anything is mounted: that no other instance runs is
/// what the lock proves, so whatever is mounted there has no owner.
void cleanUpStaleMounts(const MountPointsLock& lock);

}  // namespace kelvane
