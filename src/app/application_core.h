// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/recording/drive_registry.h"
#include "platform/volumes/mount_points_lock.h"
#include "platform/volumes/visible_mounts.h"

namespace kelvane {

/// What window and batch mode have in common below the controller: the right to the fixed mount
/// points, the drives, and the visible mounts of discs. The drives are left alone until the
/// controller sets them up; see ControllerServices::drivesWillBeObserved. Ends all of it when
/// deleted. Main thread only; one at a time.
class ApplicationCore {
 public:
  /// Null, with one sentence for the user in `error`, where another instance runs, the folder of
  /// volumes cannot be used, or one of the drives that are asked for by name is none: a node below
  /// /dev, or the disc for an emulated drive. What an instance that was killed has left mounted is
  /// cleaned away first.
  static std::unique_ptr<ApplicationCore> create(const std::vector<std::string>& namedDrives,
                                                 DriveRegistry::RealDrives realDrives,
                                                 std::string* error);

  VisibleMounts& visibleMounts() { return visibleMounts_; }

 private:
  explicit ApplicationCore(MountPointsLock lock);

  MountPointsLock lock_;
  VisibleMounts visibleMounts_;
};

}  // namespace kelvane
