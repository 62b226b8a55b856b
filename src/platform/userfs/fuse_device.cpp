// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/userfs/fuse_device.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "platform/foundation/node_access.h"
#include "platform/foundation/placeholders.h"
#include "platform/foundation/strings_table.h"

namespace kelvane::userfs {
namespace {

constexpr char kUsualRule[] = R"(KERNEL=="fuse", MODE="0666")";

std::string whatHelps(const std::string& device, int code) {
  switch (code) {
    case ENOENT:
    case ENODEV:
    case ENXIO:
      return localizedString(
          "ReasonNoFuseModule",
          "The kernel's module for it is not loaded. As root, run: modprobe fuse.");
    case EACCES:
      return describeMissingAccess(device, accessToNode(device), kUsualRule);
    case EPERM:
      return localizedString("ReasonContainer",
                             "Whoever started this container has not let it use the device.");
    default:
      return {};
  }
}

}  // namespace

std::string whyFuseDeviceIsUnusable(const std::string& device) {
  const int descriptor = open(device.c_str(), O_RDWR | O_CLOEXEC);
  if (descriptor < 0) {
    const int code = errno;
    const std::string reason =
        format(localizedString("ReasonDeviceNotOpened", "The device %@ cannot be opened: %@."),
               device, std::strerror(code));
    const std::string help = whatHelps(device, code);
    return help.empty() ? reason : reason + " " + help;
  }
  struct stat status {};
  const bool isDevice = fstat(descriptor, &status) == 0 && S_ISCHR(status.st_mode);
  close(descriptor);
  if (isDevice) return {};
  return format(localizedString("ReasonNoFuseDevice",
                                "%@ is no device: this system has no user-space file systems."),
                device);
}

}  // namespace kelvane::userfs
