// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/volumes/disc_mount.h"
#include "platform/volumes/mount_table.h"

namespace kelvane {

class DRDevice;

/// A disc that is being mounted. Deleted by the thread that asked for it once that is not
/// interested any more: a mount that has come stays, one that has not come is given up.
class MountRequest {
 public:
  virtual ~MountRequest() = default;
};

/// What the operations on disc volumes need of the system: reading the mount table, mounting,
/// unmounting, waiting. The system's own stands behind `system()`; tests put one of their own in
/// place. Any thread.
class VolumeServices {
 public:
  virtual ~VolumeServices() = default;

  static VolumeServices& system();

  /// The paths of the visible volumes: "/Volumes/%@" for each entry of the folder, in listing
  /// order, then where the desktop has mounted discs elsewhere. Empty where the folder cannot be
  /// listed.
  virtual std::vector<std::string> visibleVolumePaths() = 0;

  /// The mount table entry that the path belongs to; empty where it cannot be examined.
  virtual std::optional<MountTableEntry> mountTableEntryOf(const std::string& path) = 0;

  /// The volume that is mounted at `path`, named by its mount point. Empty where the path does not
  /// exist or is no mount point.
  virtual std::optional<std::string> volumeAtPath(const std::string& path) = 0;

  /// Unmounts the volume, once, and waits for it: 0, −47 where it is in use, otherwise an errno
  /// value. The folder of a visible volume goes with it.
  virtual int unmountVolumeSync(const std::string& volume) = 0;

  /// The disc of this drive, which is mounted nowhere any more, is being opened: keeps a desktop
  /// that mounts discs by itself from mounting it again, and the drive's button from taking it out,
  /// until that is ended at the drive.
  virtual void keepOthersFromMounting(const DRDevice& /*device*/) {}

  /// Ends that at the drive: the disc has not been opened after all.
  virtual void letOthersMount(const DRDevice& /*device*/) {}

  /// Makes the folder and those above it. Errors are ignored.
  virtual void createDirectory(const std::string& path) = 0;

  /// Asks for the disc to be mounted and does not wait for it. Null where it cannot be asked for.
  virtual std::unique_ptr<MountRequest> requestMount(const DiscMount& mount) = 0;

  virtual void sleep(std::chrono::milliseconds duration) = 0;

  /// Sleeps between two looks at `mountPoint`, but wakes as soon as an ISO-9660 volume is mounted
  /// there, so that a mount that comes fast is not waited for longer than it takes.
  virtual void sleepUnlessMounted(std::chrono::milliseconds duration,
                                  const std::string& mountPoint) = 0;
};

}  // namespace kelvane
