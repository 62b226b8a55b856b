// SPDX-License-Identifier: GPL-2.0-or-later
// kelvanefs-drive-is-claimed NODE: exit status 0 where a program has claimed the disc of that drive
// by an exclusive descriptor (O_EXCL, open(2)), as KelvaneFS has while a disc is open, and a
// recorder while it writes; 1 where nobody has, or nothing can be said of it. udev asks it when the
// drive's button is pressed, as root.
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <sstream>
#include <string>

namespace {

/// Whether the kernel has mounted something of the device: it holds that by an exclusive
/// descriptor, too, and what the button means then is the system's affair (proc_pid_mountinfo(5)).
bool isMountedByTheKernel(dev_t device) {
  const std::string wanted = std::to_string(major(device)) + ":" + std::to_string(minor(device));
  std::ifstream mounts("/proc/self/mountinfo");
  for (std::string line; std::getline(mounts, line);) {
    std::istringstream words(line);
    std::string identifier;
    std::string parent;
    std::string numbers;
    if (words >> identifier >> parent >> numbers && numbers == wanted) return true;
  }
  return false;
}

bool isClaimed(const char* node) {
  struct stat status = {};
  if (stat(node, &status) != 0 || !S_ISBLK(status.st_mode)) return false;
  if (isMountedByTheKernel(status.st_rdev)) return false;
  const int descriptor = open(node, O_RDONLY | O_NONBLOCK | O_EXCL | O_CLOEXEC);
  if (descriptor < 0) return errno == EBUSY;
  close(descriptor);
  return false;
}

}  // namespace

int main(int argc, char** argv) {
  return argc == 2 && isClaimed(argv[1]) ? 0 : 1;
}
