// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <optional>
#include <string>

namespace kelvane {

/// The right to the fixed mount points: whoever holds it is the one running instance on the
/// machine (below the path prefix, if there is one). Ends with the object or the process, however
/// that ends.
class MountPointsLock {
 public:
  /// Empty where another process holds it, or (with the reason in `error`) it cannot be asked for;
  /// `error` is always a sentence for people then.
  static std::optional<MountPointsLock> acquire(std::string* error);

  ~MountPointsLock();
  MountPointsLock(MountPointsLock&& other) noexcept;
  MountPointsLock& operator=(MountPointsLock&& other) noexcept;

 private:
  MountPointsLock(int descriptor, std::string path);

  int descriptor_ = -1;  // Closed on exec, so that no child keeps the lock.
  std::string path_;     // The file that is locked; removed with the lock.
};

}  // namespace kelvane
