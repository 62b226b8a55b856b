// SPDX-License-Identifier: GPL-2.0-or-later
#include "app/application_core.h"

#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "platform/foundation/paths.h"
#include "platform/foundation/placeholders.h"
#include "platform/foundation/strings_table.h"
#include "platform/volumes/stale_mounts.h"

namespace kelvane {
namespace {

/// Whether mount points can be made in the folder of volumes: tried, since root may be refused too
/// (a read-only file system) where the permissions say yes.
bool volumesDirectoryIsUsable(std::string* error) {
  const std::string folder = paths::volumesDirectory();
  std::string attempt = folder + "/.kelvanefs-XXXXXX";
  if (mkdtemp(attempt.data()) != nullptr) {
    rmdir(attempt.c_str());
    return true;
  }
  const int code = errno;
  *error = format(localizedString("ReasonVolumesNotUsable", "No volume can be mounted in %@: %@."),
                  folder, std::strerror(code));
  if (code == ENOENT || code == EACCES) {
    const std::string help =
        localizedString("ReasonVolumesHelp", "As root, run: install -d -m 1777 %@.");
    *error += " " + format(help, folder);
  }
  return false;
}

}  // namespace

std::unique_ptr<ApplicationCore> ApplicationCore::create(
    const std::vector<std::string>& namedDrives, DriveRegistry::RealDrives realDrives,
    std::string* error) {
  std::optional<MountPointsLock> lock = MountPointsLock::acquire(error);
  if (!lock) return nullptr;
  if (!volumesDirectoryIsUsable(error)) return nullptr;
  cleanUpStaleMounts(*lock);
  DriveRegistry& drives = DriveRegistry::shared();
  drives.setRealDrives(realDrives);
  for (const std::string& drive : namedDrives) {
    const bool isNode = drive.starts_with("/dev/");
    const DRDevice* device =
        isNode ? drives.addRealDrive(drive, error) : drives.addEmulatedDrive(drive, error);
    if (device == nullptr) return nullptr;
  }
  return std::unique_ptr<ApplicationCore>(new ApplicationCore(std::move(*lock)));
}

ApplicationCore::ApplicationCore(MountPointsLock lock) : lock_(std::move(lock)) {}

}  // namespace kelvane
