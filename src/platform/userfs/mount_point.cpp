// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/userfs/mount_point.h"

#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string_view>
#include <utility>

#include "platform/foundation/child_task.h"
#include "platform/foundation/placeholders.h"

namespace kelvane::userfs {
namespace {

// Whether the process that served the file system at `path` has gone. The kernel may answer for the
// attributes from its memory, for the capacity it has to ask.
bool isDead(const std::string& path) {
  struct statvfs capacity = {};
  return statvfs(path.c_str(), &capacity) != 0 && (errno == ENOTCONN || errno == ECONNABORTED);
}

bool isMountedOn(const std::string& path, const struct stat& status) {
  struct stat above = {};
  return lstat((path + "/..").c_str(), &above) == 0 && above.st_dev != status.st_dev;
}

UnmountResult resultOfErrno(int code) {
  if (code == EBUSY) return UnmountResult::Busy;
  if (code == EINVAL || code == ENOENT) return UnmountResult::NotMounted;
  return UnmountResult::Failed;
}

UnmountResult resultOfHelperText(std::string_view text) {
  if (text.find("busy") != std::string_view::npos) return UnmountResult::Busy;
  if (text.find("not found") != std::string_view::npos) return UnmountResult::NotMounted;
  return UnmountResult::Failed;
}

UnmountResult unmountThroughHelper(const std::string& path, UnmountMode mode) {
  const std::string helper = mountHelperPath();
  if (helper.empty()) return UnmountResult::Failed;
  ChildTask task;
  task.setLaunchPath(helper);
  task.setEnvironmentVariable("LC_ALL", "C");
  if (mode == UnmountMode::Lazily) {
    task.setArguments({"-u", "-z", "--", path});
  } else {
    task.setArguments({"-u", "--", path});
  }
  if (!task.launch()) return UnmountResult::Failed;
  task.waitBlocking(-1);
  if (task.terminationStatus() == 0) return UnmountResult::Started;
  return resultOfHelperText(task.readStandardErrorToEnd());
}

}  // namespace

MountPoint::MountPoint(std::string path, bool isOurs) : path_(std::move(path)), isOurs_(isOurs) {}

MountPoint::MountPoint(MountPoint&& other) noexcept
    : path_(std::move(other.path_)), isOurs_(std::exchange(other.isOurs_, false)) {}

MountPoint::~MountPoint() {
  if (isOurs_) rmdir(path_.c_str());
}

std::optional<MountPoint> MountPoint::prepare(const std::string& path, std::string* reason) {
  removeDeadMount(path);
  if (mkdir(path.c_str(), 0755) == 0) return MountPoint(path, true);
  struct stat status = {};
  if (errno != EEXIST || lstat(path.c_str(), &status) != 0) {
    *reason = format("The mount point %@ cannot be made: %@.", path, std::strerror(errno));
    return std::nullopt;
  }
  if (!S_ISDIR(status.st_mode)) {
    *reason = format("The mount point %@ is no directory.", path);
    return std::nullopt;
  }
  if (isMountedOn(path, status)) {
    *reason = format("Something is mounted at %@ already.", path);
    return std::nullopt;
  }
  return MountPoint(path, false);
}

UnmountResult unmountPath(const std::string& path, UnmountMode mode) {
  const int flags = UMOUNT_NOFOLLOW | (mode == UnmountMode::Lazily ? MNT_DETACH : 0);
  if (umount2(path.c_str(), flags) == 0) return UnmountResult::Started;
  if (errno == EPERM && geteuid() != 0) return unmountThroughHelper(path, mode);
  return resultOfErrno(errno);
}

void removeDeadMount(const std::string& path) {
  if (isDead(path)) unmountPath(path, UnmountMode::Lazily);
}

std::string mountHelperPath() {
  // Where libfuse itself looks first, then the usual folders.
  for (const char* path :
       {"/usr/bin/fusermount3", "/bin/fusermount3", "/usr/local/bin/fusermount3"}) {
    if (access(path, X_OK) == 0) return path;
  }
  return {};
}

}  // namespace kelvane::userfs
