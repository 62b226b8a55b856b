// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/volumes/device_hold.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "platform/volumes/volume_services.h"

namespace kelvane {
namespace {

constexpr std::chrono::milliseconds kPause{20};
constexpr int kMostPauses = 150;

bool isHeld(const std::string& node) {
  struct stat status {};
  if (stat(node.c_str(), &status) != 0 || !S_ISBLK(status.st_mode)) return false;
  const int descriptor = open(node.c_str(), O_RDONLY | O_NONBLOCK | O_EXCL | O_CLOEXEC);
  if (descriptor < 0) return errno == EBUSY;
  close(descriptor);
  return false;
}

}  // namespace

void waitUntilNobodyHolds(const std::string& node, VolumeServices& services) {
  for (int pauses = 0; pauses < kMostPauses && isHeld(node); ++pauses) services.sleep(kPause);
}

}  // namespace kelvane
