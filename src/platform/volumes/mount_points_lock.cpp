// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/volumes/mount_points_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

#include "platform/foundation/paths.h"
#include "platform/foundation/placeholders.h"
#include "platform/foundation/strings_table.h"

namespace kelvane {
namespace {

// Beside the hidden mount point's folder, not in it: that folder is deleted after each burn.
std::string lockFile() {
  return paths::temporaryDirectory() + "/.kelvanefs.lock";
}

// Every user of the machine takes the same lock, which needs no right but to read. An existing file
// is opened without O_CREAT, which the kernel refuses for others' files in a sticky folder. A link
// is not followed: anybody may put one into /tmp.
int openLockFile(const std::string& path) {
  const int existing = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
  if (existing >= 0 || errno != ENOENT) return existing;
  return open(path.c_str(), O_RDONLY | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0644);
}

// Whether the locked file is still the one that others find: its last holder removes it.
bool isFileAt(int descriptor, const std::string& path) {
  struct stat locked = {};
  struct stat named = {};
  return fstat(descriptor, &locked) == 0 && stat(path.c_str(), &named) == 0 &&
         locked.st_dev == named.st_dev && locked.st_ino == named.st_ino;
}

std::string whyNotLocked(const std::string& path, int code) {
  if (code == EWOULDBLOCK) {
    return localizedString(
        "ReasonRunning",
        "KelvaneFS is running already. One disc can be open at a time on a machine.");
  }
  return format(localizedString("ReasonFileNotLocked", "The file %@ cannot be locked: %@."), path,
                std::strerror(code));
}

}  // namespace

std::optional<MountPointsLock> MountPointsLock::acquire(std::string* error) {
  const std::string path = lockFile();
  for (;;) {
    const int descriptor = openLockFile(path);
    if (descriptor < 0) {
      const int code = errno;
      *error = format(localizedString("ReasonFileNotOpened", "The file %@ cannot be opened: %@."),
                      path, std::strerror(code));
      return std::nullopt;
    }
    if (flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
      const int code = errno;
      close(descriptor);
      *error = whyNotLocked(path, code);
      return std::nullopt;
    }
    if (isFileAt(descriptor, path)) return MountPointsLock(descriptor, path);
    close(descriptor);
  }
}

MountPointsLock::MountPointsLock(int descriptor, std::string path)
    : descriptor_(descriptor), path_(std::move(path)) {}

MountPointsLock::~MountPointsLock() {
  if (descriptor_ < 0) return;
  // Removed while it is still locked, so that nobody's new lock is removed.
  unlink(path_.c_str());
  close(descriptor_);
}

MountPointsLock::MountPointsLock(MountPointsLock&& other) noexcept
    : descriptor_(std::exchange(other.descriptor_, -1)), path_(std::move(other.path_)) {}

MountPointsLock& MountPointsLock::operator=(MountPointsLock&& other) noexcept {
  std::swap(descriptor_, other.descriptor_);
  std::swap(path_, other.path_);
  return *this;
}

}  // namespace kelvane
