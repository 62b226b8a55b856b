// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <optional>
#include <string>

#include "virtualdrive/virtual_drive.h"

namespace kelvane::virtualdrive::shim {

/// The one drive that the preloaded library shows: the disc folder and the device path come from
/// the environment (KELVANE_SHIM_DISC, KELVANE_SHIM_DEVICE). Nothing is shown where one of them is
/// missing or the folder holds no disc.
///
/// A descriptor belongs to the drive when it is open on the disc's file of sectors, known by its
/// device and inode. So read, lseek, dup, fork, exec and /dev/fd/N work without being looked at.
class ShownDrive {
 public:
  /// Null where nothing is shown.
  static const ShownDrive* get();

  bool isDevicePath(const char* path) const;
  /// Paths below /dev/fd and /proc, which may lead to a descriptor of the drive.
  static bool mayLeadToDescriptor(const char* path);
  bool isSectorsFile(dev_t device, ino_t inode) const {
    return device == fileDevice_ && inode == fileInode_;
  }
  /// Also false where the descriptor is none.
  bool ownsDescriptor(int descriptor) const;

  const VirtualDrive& drive() const { return drive_; }
  const char* sectorsPath() const { return sectorsPath_.c_str(); }
  const std::string& lockPath() const { return lockPath_; }
  const std::string& devicePath() const { return devicePath_; }
  /// The number of the device node: the major number of SCSI CD-ROM drives, and N of /dev/srN.
  dev_t deviceNumber() const { return deviceNumber_; }

 private:
  ShownDrive(VirtualDrive drive, std::string devicePath, const struct stat& sectors);
  static std::optional<ShownDrive> fromEnvironment();

  VirtualDrive drive_;
  std::string devicePath_;
  std::string sectorsPath_;
  std::string lockPath_;
  dev_t deviceNumber_;
  dev_t fileDevice_;
  ino_t fileInode_;
};

/// While one lives, the functions that the library stands in for go straight through on this
/// thread: the library itself opens the disc's files as what they are.
class StepAside {
 public:
  StepAside() { ++depth_; }
  ~StepAside() { --depth_; }
  StepAside(const StepAside&) = delete;
  StepAside& operator=(const StepAside&) = delete;
  static bool active() { return depth_ > 0; }

 private:
  static thread_local int depth_;
};

/// The drive, unless nothing is shown or the library itself is calling.
inline const ShownDrive* shownDrive() {
  return StepAside::active() ? nullptr : ShownDrive::get();
}

}  // namespace kelvane::virtualdrive::shim
