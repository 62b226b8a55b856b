// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/volumes/unmount.h"

#include <sys/mount.h>

#include <cerrno>

#include "platform/foundation/child_task.h"
#include "platform/volumes/mount_table.h"

namespace kelvane {
namespace {

int statusOfErrno(int code) {
  return code == EBUSY ? kUnmountBusy : code;
}

// fusermount3 tells its reason only in words: "failed to unmount /x: Device or resource busy".
int unmountWithFusermount(const std::string& mountPoint, UnmountManner manner) {
  ChildTask task;
  task.setLaunchPath("fusermount3");
  task.setArguments({manner == UnmountManner::Detach ? "-uz" : "-u", "--", mountPoint});
  task.setEnvironmentVariable("LC_ALL", "C");
  if (!task.launch()) return ENOENT;
  task.waitBlocking(-1);
  if (task.terminationStatus() == 0) return kUnmountDone;
  const bool busy = task.readStandardErrorToEnd().find("busy") != std::string::npos;
  return busy ? kUnmountBusy : EPERM;
}

}  // namespace

int unmountAtPath(const std::string& mountPoint, UnmountManner manner) {
  const int flags = UMOUNT_NOFOLLOW | (manner == UnmountManner::Detach ? MNT_DETACH : 0);
  if (umount2(mountPoint.c_str(), flags) == 0) return kUnmountDone;
  if (errno != EPERM) return statusOfErrno(errno);
  if (!isMountPoint(mountPoint)) return EINVAL;
  return unmountWithFusermount(mountPoint, manner);
}

}  // namespace kelvane
