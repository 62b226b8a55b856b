// SPDX-License-Identifier: GPL-2.0-or-later
#include "app/controller_services.h"

#include <memory>
#include <thread>

#include "platform/desktop/work_inhibition.h"
#include "platform/recording/dr_device.h"
#include "platform/recording/drive.h"
#include "platform/recording/drive_watcher.h"
#include "platform/userfs/gm_user_file_system.h"
#include "platform/volumes/visible_mounts.h"

namespace kelvane {

ControllerServices systemControllerServices(VisibleMounts& visibleMounts) {
  ControllerServices services;
  services.devices = [] { return DRDevice::devices(); };
  services.drivesWillBeObserved = [&visibleMounts] { visibleMounts.start(); };
  services.discsWillBeScanned = [&visibleMounts] {
    visibleMounts.updateAll();
    // What the scan finds out by asking all drives comes first.
    DriveWatcher::shared().takeNoticeSoon();
  };
  services.volumes = &VolumeServices::system();
  services.userFileSystemIsAvailable = [](std::string* reason) {
    return GMUserFileSystem::isAvailable(reason);
  };
  services.discIsOpened = [&visibleMounts](const std::string& bsdName) {
    visibleMounts.hold(bsdName);
  };
  services.discIsClosed = [&visibleMounts](const std::string& bsdName) {
    for (const DRDevice* device : DRDevice::devices()) {
      Drive* drive = device->drive();
      if (device->bsdName() == bsdName && drive != nullptr) drive->letOthersMount();
    }
    visibleMounts.release(bsdName);
  };
  services.discWillBeEjected = [&visibleMounts](const std::string& bsdName) {
    visibleMounts.unmountAllOf(bsdName);
  };
  services.holdOffInterruptions = [](const std::string& why) {
    return std::make_shared<desktop::WorkInhibition>(why);
  };
  services.sleep = [](std::chrono::milliseconds duration) {
    std::this_thread::sleep_for(duration);
  };
  return services;
}

}  // namespace kelvane
