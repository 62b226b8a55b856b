// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/volumes/visible_mounts.h"

#include <sys/stat.h>
#include <unistd.h>

#include <QString>
#include <algorithm>
#include <cerrno>
#include <cstring>

#include "platform/desktop/disc_service.h"
#include "platform/foundation/paths.h"
#include "platform/foundation/system_log.h"
#include "platform/recording/dr_device.h"
#include "platform/recording/dr_notification_center.h"
#include "platform/volumes/disc_mount.h"
#include "platform/volumes/mount_table.h"
#include "platform/volumes/stale_mounts.h"

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

// Where the session to be mounted begins; empty where there is nothing to mount.
std::optional<int64_t> mountableSessionStart(const DRDevice& device) {
  if (!device.isValid() || !device.mediaIsPresent() || device.mediaIsBlank()) return std::nullopt;
  return lastSessionStart(device.status());
}

bool isMountedByOthers(const std::string& bsdName) {
  const std::vector<MountTableLine> table = readMountTable();
  const std::vector<MountTableLine> own = ownMounts(table, ownMountPoints());
  return std::any_of(table.begin(), table.end(), [&](const MountTableLine& line) {
    return line.mountedFrom == "/dev/" + bsdName &&
           std::find(own.begin(), own.end(), line) == own.end();
  });
}

// A desktop that does so by itself may have been faster, and one that is slow may still do it: a
// disc that is mounted twice cannot be burned.
bool desktopMounts(const std::string& bsdName) {
  const auto answer = desktop::mountThroughDiscService(bsdName);
  return answer == desktop::DiscServiceAnswer::Done ||
         answer == desktop::DiscServiceAnswer::AlreadyMounted ||
         answer == desktop::DiscServiceAnswer::Unanswered;
}

}  // namespace

VisibleMounts::~VisibleMounts() {
  DRNotificationCenter::currentRunLoopCenter().removeObserver(this);
  for (const std::string& drive : drives_) unmountAllOf(drive);
}

void VisibleMounts::start() {
  DRNotificationCenter::currentRunLoopCenter().addObserver(
      this, [this](const Notification& change) { deviceStatusChanged(change.object); },
      DRDeviceStatusChangedNotification, nullptr);
}

// The sender may be gone by now, so it is looked for among the drives that there are.
void VisibleMounts::deviceStatusChanged(const void* device) {
  for (DRDevice* candidate : DRDevice::devices()) {
    if (candidate == device) update(*candidate);
  }
}

void VisibleMounts::hold(const std::string& bsdName) {
  held_.insert(bsdName);
}

void VisibleMounts::release(const std::string& bsdName) {
  held_.erase(bsdName);
  for (DRDevice* device : DRDevice::devices()) {
    if (device->bsdName() == bsdName) update(*device);
  }
}

void VisibleMounts::unmountAllOf(const std::string& bsdName) {
  mounted_.erase(bsdName);
  const std::string device = "/dev/" + bsdName;
  const OwnMountPoints points = ownMountPoints();
  for (const MountTableLine& mount : ownMounts(readMountTable(), points)) {
    if (mount.mountedFrom != device && mount.mountedFrom != device + "s0") continue;
    const int status = removeOwnMount(mount, points);
    if (status != 0) systemLog("%@ cannot be unmounted: %i", mount.mountedOn, status);
  }
}

void VisibleMounts::update(DRDevice& device) {
  const std::string bsdName = device.bsdName();
  drives_.insert(bsdName);
  if (device.mediaIsBusy() || device.mediaIsTransitioning()) return;
  const std::optional<int64_t> sessionStart = mountableSessionStart(device);
  if (!sessionStart) {
    unmountAllOf(bsdName);
    return;
  }
  if (held_.contains(bsdName)) return;
  const auto mounted = mounted_.find(bsdName);
  if (mounted != mounted_.end() && mounted->second.sessionStart == *sessionStart &&
      isMountPoint(mounted->second.mountPoint)) {
    return;
  }
  const bool isReal = !device.emulatedDisc();
  if (isReal && isMountedByOthers(bsdName)) return;
  unmountAllOf(bsdName);
  if (isReal && desktopMounts(bsdName)) return;
  mount(device, *sessionStart);
}

void VisibleMounts::updateAll() {
  for (DRDevice* device : DRDevice::devices()) update(*device);
}

void VisibleMounts::mount(const DRDevice& device, int64_t sessionStart) {
  const std::string bsdName = mountableBsdName(device);
  const std::optional<std::string> volumeName = volumeNameOfDisc(bsdName, sessionStart);
  if (!volumeName) return;
  const std::optional<std::string> folder = makeVisibleFolder(*volumeName);
  if (!folder) return;
  std::string error;
  if (!mountDisc({bsdName, sessionStart, *folder}, &error)) {
    systemLog("mounting %@ failed: %@", bsdName, error);
    rmdir(folder->c_str());
    return;
  }
  mounted_[device.bsdName()] = {*folder, sessionStart};
}

std::string mountableBsdName(const DRDevice& device) {
  const std::optional<std::string> mediaType = device.mediaType();
  const bool isCd = mediaType == DRDeviceMediaTypeCDR || mediaType == DRDeviceMediaTypeCDRW;
  return isCd ? device.bsdName() + "s0" : device.bsdName();
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
