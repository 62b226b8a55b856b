// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <string>

namespace kelvane {

/// The status of an unmount that succeeded.
inline constexpr int kUnmountDone = 0;
/// The status of an unmount that was refused because the volume is in use.
inline constexpr int kUnmountBusy = -47;

enum class UnmountManner {
  /// Refused while the volume is in use.
  WhenFree,
  /// Takes the volume out of the tree at once; what is open on it goes on until it is closed.
  Detach,
};

/// Unmounts what is mounted at `mountPoint` and waits for it: once this returns kUnmountDone the
/// mount is gone from the mount table. As root by the system call, as another user through
/// fusermount3 or, where the desktop made the mount, through umount(8), which asks UDisks2. Returns
/// kUnmountDone, kUnmountBusy, or the errno value of any other failure (EINVAL: nothing is mounted
/// there). Any thread.
int unmountAtPath(const std::string& mountPoint, UnmountManner manner);

}  // namespace kelvane
