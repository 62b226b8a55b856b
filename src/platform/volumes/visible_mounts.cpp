// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/volumes/visible_mounts.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "platform/foundation/main_thread.h"
#include "platform/foundation/system_log.h"
#include "platform/recording/dr_notification_center.h"
#include "platform/recording/drive_watcher.h"
#include "platform/volumes/mount_table.h"
#include "platform/volumes/stale_mounts.h"
#include "platform/volumes/visible_mount.h"

namespace kelvane {
namespace {

bool hasWrittenDisc(const DRDevice& device) {
  return device.isValid() && device.mediaIsPresent() && !device.mediaIsBlank();
}

bool isMountedByOthers(const std::string& bsdName) {
  const std::vector<MountTableLine> table = readMountTable();
  const std::vector<MountTableLine> own = ownMounts(table, ownMountPoints());
  return std::any_of(table.begin(), table.end(), [&](const MountTableLine& line) {
    return line.mountedFrom == "/dev/" + bsdName &&
           std::find(own.begin(), own.end(), line) == own.end();
  });
}

}  // namespace

VisibleMounts::VisibleMounts(Drives drives) : drives_(std::move(drives)) {}

VisibleMounts::~VisibleMounts() {
  DRNotificationCenter::currentRunLoopCenter().removeObserver(this);
  for (const std::string& drive : seen_) unmountAllOf(drive);
}

void VisibleMounts::start() {
  if (std::exchange(observesDrives_, true)) return;
  DRNotificationCenter::currentRunLoopCenter().addObserver(
      this, [this](const Notification& change) { deviceStatusChanged(change.object); },
      DRDeviceStatusChangedNotification, nullptr);
}

// The sender may be gone by now, so it is looked for among the drives that there are.
void VisibleMounts::deviceStatusChanged(const void* device) {
  for (DRDevice* candidate : drives_()) {
    if (candidate == device) update(*candidate);
  }
}

void VisibleMounts::hold(const std::string& bsdName) {
  awaitWork(bsdName);
  held_.insert(bsdName);
}

void VisibleMounts::release(const std::string& bsdName) {
  held_.erase(bsdName);
  updateDrive(bsdName);
}

void VisibleMounts::updateDrive(const std::string& bsdName) {
  for (DRDevice* device : drives_()) {
    if (device->bsdName() == bsdName) update(*device);
  }
}

void VisibleMounts::unmountAllOf(const std::string& bsdName) {
  awaitWork(bsdName);
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
  seen_.insert(bsdName);
  if (device.mediaIsBusy() || device.mediaIsTransitioning()) return;
  if (isAtWork(bsdName)) {
    begun_.at(bsdName).isOutOfDate = true;
    return;
  }
  const bool isReal = !device.emulatedDisc();
  const bool isWritten = hasWrittenDisc(device);
  const DRDeviceStatus status = isWritten ? device.status() : DRDeviceStatus();
  // Who does not say what is on the disc has not said that it is another one.
  if (isWritten && !status.DRDeviceMediaInfoKey) {
    DriveWatcher::shared().takeNoticeSoon();
    return;
  }
  const std::optional<int64_t> sessionStart = lastSessionStart(status);
  if (!sessionStart) {
    unmountAllOf(bsdName);
    if (isReal && !device.mediaIsPresent() && isMountedByOthers(bsdName)) {
      beginFor({bsdName, bsdName, 0}, [bsdName]() -> std::optional<std::string> {
        unmountAbsentDisc(bsdName);
        return std::nullopt;
      });
    }
    return;
  }
  if (held_.contains(bsdName)) return;
  const auto mounted = mounted_.find(bsdName);
  if (mounted != mounted_.end() && mounted->second.sessionStart == *sessionStart &&
      isMountPoint(mounted->second.mountPoint)) {
    return;
  }
  if (isReal && isMountedByOthers(bsdName)) return;
  unmountAllOf(bsdName);
  const VisibleDisc disc{bsdName, mountableBsdName(device), *sessionStart};
  if (!isReal) {
    noteMount(disc, mountVisibly(disc));
    return;
  }
  beginFor(disc, [disc] { return desktopMounts(disc.drive) ? std::nullopt : mountVisibly(disc); });
}

void VisibleMounts::noteMount(const VisibleDisc& disc, const std::optional<std::string>& folder) {
  if (folder) mounted_[disc.drive] = {*folder, disc.sessionStart};
}

// A real drive takes its time, and the desktop too.
void VisibleMounts::beginFor(const VisibleDisc& disc, Work work) {
  const uint64_t number = ++worksBegun_;
  const auto tellOfEnd = [self = std::weak_ptr(self_), drive = disc.drive, number] {
    if (const auto stillThere = self.lock()) (*stillThere)->workHasEnded(drive, number);
  };
  const auto workAndTell = [work = std::move(work), tellOfEnd] {
    std::optional<std::string> folder = work();
    performOnMainThread(tellOfEnd);
    return folder;
  };
  Begun begun{number, disc, std::async(std::launch::async, workAndTell)};
  begun_.insert_or_assign(disc.drive, std::move(begun));
}

// Work that has ended is noted at once, and is none any more.
bool VisibleMounts::isAtWork(const std::string& bsdName) {
  const auto found = begun_.find(bsdName);
  if (found == begun_.end()) return false;
  if (found->second.folder.wait_for(std::chrono::seconds(0)) == std::future_status::ready) {
    awaitWork(bsdName);
    return false;
  }
  return true;
}

void VisibleMounts::awaitWork(const std::string& bsdName) {
  const auto found = begun_.find(bsdName);
  if (found == begun_.end()) return;
  noteMount(found->second.disc, found->second.folder.get());
  begun_.erase(found);
}

void VisibleMounts::workHasEnded(const std::string& bsdName, uint64_t number) {
  const auto found = begun_.find(bsdName);
  if (found == begun_.end() || found->second.number != number) return;
  const bool isOutOfDate = found->second.isOutOfDate;
  awaitWork(bsdName);
  if (isOutOfDate) updateDrive(bsdName);
}

// Nothing is known to have changed, so a drive at work has its mount without another look.
void VisibleMounts::updateAll() {
  for (DRDevice* device : drives_()) {
    if (!isAtWork(device->bsdName())) update(*device);
  }
}

std::string mountableBsdName(const DRDevice& device) {
  return isWritableCd(device.mediaType()) ? device.bsdName() + "s0" : device.bsdName();
}

}  // namespace kelvane
