// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/volumes/stale_mounts.h"

#include <unistd.h>

#include <algorithm>
#include <iterator>

#include "platform/foundation/paths.h"
#include "platform/foundation/system_log.h"
#include "platform/volumes/unmount.h"

namespace kelvane {
namespace {

bool isUserSpaceType(const std::string& kernelType) {
  return kernelType == "fuse" || kernelType.starts_with("fuse.");
}

bool isOwnMount(const MountTableLine& line, const OwnMountPoints& points) {
  if (line.mountedOn == points.overlayMountPoint || line.mountedOn == points.hiddenMountPoint) {
    return isUserSpaceType(line.kernelType);
  }
  const std::string folder = points.volumesDirectory + "/";
  return line.kernelType.starts_with("fuse.cd9660") && line.mountedOn.starts_with(folder) &&
         line.mountedOn.find('/', folder.size()) == std::string::npos;
}

}  // namespace

OwnMountPoints ownMountPoints() {
  return {resolvedMountPoint(paths::volumesDirectory()),
          resolvedMountPoint(paths::overlayMountPoint()),
          resolvedMountPoint(paths::hiddenMountPoint())};
}

std::vector<MountTableLine> ownMounts(const std::vector<MountTableLine>& table,
                                      const OwnMountPoints& points) {
  std::vector<MountTableLine> mounts;
  std::copy_if(table.rbegin(), table.rend(), std::back_inserter(mounts),
               [&](const MountTableLine& line) { return isOwnMount(line, points); });
  return mounts;
}

int removeOwnMount(const MountTableLine& mount, const OwnMountPoints& points) {
  int status = unmountAtPath(mount.mountedOn, UnmountManner::WhenFree);
  if (status == kUnmountBusy) status = unmountAtPath(mount.mountedOn, UnmountManner::Detach);
  // Only an empty folder is removed, so one that still has another mount in it stays too.
  if (status == kUnmountDone && mount.mountedOn != points.hiddenMountPoint) {
    rmdir(mount.mountedOn.c_str());
  }
  return status;
}

void cleanUpStaleMounts(const MountPointsLock& /*lock*/) {
  const OwnMountPoints points = ownMountPoints();
  for (const MountTableLine& mount : ownMounts(readMountTable(), points)) {
    const int status = removeOwnMount(mount, points);
    if (status == kUnmountDone) continue;
    systemLog("%@ is left from an earlier run and cannot be unmounted: %i", mount.mountedOn,
              status);
  }
}

}  // namespace kelvane
