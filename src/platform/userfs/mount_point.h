// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <optional>
#include <string>

#include "platform/userfs/gm_user_file_system.h"

namespace kelvane::userfs {

/// The directory that a volume is mounted on; removed with the object if the object made it.
class MountPoint {
 public:
  /// Makes the directory if it is missing. A mount whose process has died is taken away first.
  /// Empty where it cannot be used; `reason` then says why in one sentence.
  static std::optional<MountPoint> prepare(const std::string& path, std::string* reason);

  ~MountPoint();
  MountPoint(MountPoint&& other) noexcept;
  MountPoint& operator=(MountPoint&&) = delete;
  MountPoint(const MountPoint&) = delete;
  MountPoint& operator=(const MountPoint&) = delete;

  const std::string& path() const { return path_; }

 private:
  MountPoint(std::string path, bool isOurs);

  std::string path_;
  bool isOurs_;
};

/// Whether the mount goes at once, or vanishes from sight and goes when its last user has ended.
enum class UnmountMode { IfNotBusy, Lazily };

/// Asks the kernel (as root) or the mount helper to unmount what is mounted at `path`.
UnmountResult unmountPath(const std::string& path, UnmountMode mode);

/// Takes away what is mounted at `path` if the process behind it has gone.
void removeDeadMount(const std::string& path);

/// Where the mount helper for ordinary users is; empty where there is none.
std::string mountHelperPath();

}  // namespace kelvane::userfs
