// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/volumes/unmount.h"

#include <sys/mount.h>

#include <cerrno>
#include <utility>
#include <vector>

#include "platform/foundation/child_task.h"
#include "platform/volumes/mount_table.h"

namespace kelvane {
namespace {

// A service that hangs must not hang those who wait for their disc, or for the end of the program.
constexpr int kProgramTimeLimitMilliseconds = 30000;

int statusOfErrno(int code) {
  return code == EBUSY ? kUnmountBusy : code;
}

// The programs tell their reason only in words: "failed to unmount /x: Device or resource busy".
int unmountWith(const std::string& program, std::vector<std::string> arguments,
                const std::string& mountPoint) {
  arguments.insert(arguments.end(), {"--", mountPoint});
  ChildTask task;
  task.setLaunchPath(program);
  task.setArguments(std::move(arguments));
  task.setEnvironmentVariable("LC_ALL", "C");
  if (!task.launch()) return ENOENT;
  if (!task.waitBlocking(kProgramTimeLimitMilliseconds)) return ETIMEDOUT;
  if (task.terminationStatus() == 0) return kUnmountDone;
  // UDisks2 says it in its own language, with the name of the error before it.
  const std::string words = task.readStandardErrorToEnd();
  const bool busy =
      words.find("busy") != std::string::npos || words.find("DeviceBusy") != std::string::npos;
  return busy ? kUnmountBusy : EPERM;
}

// What a user mounted through FUSE is his to unmount. Of another mount umount(8) knows who made it
// for him, and asks that service: UDisks2 for what the desktop mounted.
int unmountAsUser(const MountTableLine& mount, UnmountManner manner) {
  const bool detach = manner == UnmountManner::Detach;
  if (mount.kernelType.starts_with("fuse")) {
    return unmountWith("fusermount3", {detach ? "-uz" : "-u"}, mount.mountedOn);
  }
  return unmountWith("umount", detach ? std::vector<std::string>{"-l"} : std::vector<std::string>(),
                     mount.mountedOn);
}

}  // namespace

int unmountAtPath(const std::string& mountPoint, UnmountManner manner) {
  const int flags = UMOUNT_NOFOLLOW | (manner == UnmountManner::Detach ? MNT_DETACH : 0);
  if (umount2(mountPoint.c_str(), flags) == 0) return kUnmountDone;
  if (errno != EPERM) return statusOfErrno(errno);
  const std::string resolved = resolvedMountPoint(mountPoint);
  const std::vector<MountTableLine> table = readMountTable();
  const MountTableLine* mount = mountOfPath(table, resolved);
  if (mount == nullptr || mount->mountedOn != resolved) return EINVAL;
  return unmountAsUser(*mount, manner);
}

}  // namespace kelvane
