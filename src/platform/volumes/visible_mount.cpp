// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/volumes/visible_mount.h"

#include <fcntl.h>
#include <linux/cdrom.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QString>
#include <algorithm>
#include <cerrno>
#include <cstring>

#include "platform/desktop/disc_service.h"
#include "platform/foundation/paths.h"
#include "platform/foundation/system_log.h"
#include "platform/volumes/disc_mount.h"
#include "platform/volumes/mount_table.h"
#include "platform/volumes/unmount.h"

namespace kelvane {
namespace {

// Makes the folder for a volume of this name: "NAME", or "NAME 1", "NAME 2" … where it is taken.
std::optional<std::string> makeVisibleFolder(const std::string& volumeName) {
  constexpr int kMostOfOneName = 1000;
  const std::string name = visibleFolderName(volumeName);
  const std::string first = paths::appendPathComponent(paths::volumesDirectory(), name);
  for (int count = 0; count < kMostOfOneName; ++count) {
    const std::string folder = count == 0 ? first : first + " " + std::to_string(count);
    // The writable volume comes and goes there, whether or not its folder exists now.
    if (folder == paths::overlayMountPoint()) continue;
    if (mkdir(folder.c_str(), 0755) == 0) return folder;
    if (errno != EEXIST) {
      systemLog("%@ cannot be made: %@", folder, std::strerror(errno));
      return std::nullopt;
    }
  }
  return std::nullopt;
}

// Whether the kernel's drive says so itself. It is not disturbed by that (CDROM_DRIVE_STATUS).
bool saysThatItIsEmpty(const std::string& node) {
  const int descriptor = open(node.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  if (descriptor < 0) return false;
  const int status = ioctl(descriptor, CDROM_DRIVE_STATUS, CDSL_CURRENT);
  close(descriptor);
  return status == CDS_NO_DISC || status == CDS_TRAY_OPEN;
}

}  // namespace

// A desktop that does so by itself may have been faster, and one that is slow may still do it: a
// disc that is mounted twice cannot be burned.
bool desktopMounts(const std::string& drive) {
  const auto answer = desktop::mountThroughDiscService(drive);
  return answer == desktop::DiscServiceAnswer::Done ||
         answer == desktop::DiscServiceAnswer::AlreadyMounted ||
         answer == desktop::DiscServiceAnswer::Unanswered;
}

void unmountAbsentDisc(const std::string& drive) {
  const std::string node = "/dev/" + drive;
  if (!saysThatItIsEmpty(node)) return;
  for (const MountTableLine& mount : readMountTable()) {
    if (mount.mountedFrom != node) continue;
    const int status = unmountAtPath(mount.mountedOn, UnmountManner::WhenFree);
    if (status != kUnmountDone) systemLog("%@ cannot be unmounted: %i", mount.mountedOn, status);
  }
}

std::optional<std::string> mountVisibly(const VisibleDisc& disc) {
  const std::optional<std::string> volumeName = volumeNameOfDisc(disc.bsdName, disc.sessionStart);
  if (!volumeName) return std::nullopt;
  const std::optional<std::string> folder = makeVisibleFolder(*volumeName);
  if (!folder) return std::nullopt;
  std::string error;
  if (!mountDisc({disc.bsdName, disc.sessionStart, *folder}, &error)) {
    systemLog("mounting %@ failed: %@", disc.bsdName, error);
    rmdir(folder->c_str());
    return std::nullopt;
  }
  return folder;
}

std::string visibleFolderName(const std::string& volumeName) {
  // A name in another character set is made one that every program can pass on.
  std::string name = QString::fromStdString(volumeName).toStdString();
  const auto isUnsafe = [](char c) {
    return c == '/' || static_cast<unsigned char>(c) < ' ' || c == '\x7f';
  };
  std::replace_if(name.begin(), name.end(), isUnsafe, '_');
  const bool isNameless = name.find_first_not_of(' ') == std::string::npos;
  return isNameless || name == "." || name == ".." ? "CDROM" : name;
}

}  // namespace kelvane
