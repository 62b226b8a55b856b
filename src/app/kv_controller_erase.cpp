// SPDX-License-Identifier: GPL-2.0-or-later
// KVController: erasing the selected disc.
#include "app/disc_volumes.h"
#include "app/kv_controller.h"
#include "app/volume_users.h"
#include "platform/foundation/own_files.h"
#include "platform/foundation/paths.h"
#include "platform/foundation/strings_table.h"
#include "platform/foundation/system_log.h"
#include "platform/recording/dr_device.h"
#include "platform/recording/dr_erase.h"
#include "ui/dr_erase_progress_panel.h"
#include "ui/media_controller.h"

namespace kelvane {

void KVController::attemptErase() {
  Alert alert;
  alert.buttonKeys = {"Erase", "Cancel"};
  alert.messageKey = "attempteraseshort";
  alert.informativeKey = "attempteraselong";
  alert.style = Alert::Style::Warning;
  window_.beginAlertSheet(alert, [this](int returnCode) { attemptEraseDidEnd(returnCode); });
}

// The alert has gone from the screen when this is called.
void KVController::attemptEraseDidEnd(int returnCode) {
  if (returnCode == kAlertFirstButtonReturn) performErase();
}

void KVController::performErase() {
  const std::vector<DeviceRecord> selected = window_.mediaController().selectedObjects();
  if (selected.empty()) {
    window_.beep();
    return;
  }
  DRDevice& device = *selected.back().DRDevice;
  const bool isOpen = currentDevice_ == &device;
  if (burnInProgress_ || device.mediaIsBusy() || (isOpen && !mediaIsMounted_)) {
    refuseErase("EraseDriveBusy", {});
    return;
  }
  if (!isOpen && holdsAnotherDisc(selected.back())) {
    refuseErase("EraseDiscChanged", {});
    scanForMedia();
    return;
  }
  if (!isOpen) {
    eraseDisc(device);
    return;
  }
  // Nothing is erased under the volume: it is closed first, and where it has changes the user is
  // asked about those instead.
  volumeClosedToErase_ = tmpDirPath_;
  if (!closeVolume()) volumeClosedToErase_.clear();
}

// The volume of a disc without changes has been closed in order to erase the disc.
void KVController::eraseClosedDisc() {
  volumeClosedToErase_.clear();
  DRDevice& device = *currentDevice_.load();
  setMediaIsMounted(false);
  setOpenButtonCaption(localizedString("buttonopen"));
  removeOverlayAndHideList();
  services_.discWillBeEjected(device.bsdName());
  removeOwn(paths::hiddenMountFolder());
  currentDevice_ = nullptr;
  eraseDisc(device);
  // Whoever asked to quit while the volume was being closed would leave the erase unwatched.
  window_.replyToApplicationShouldTerminate(false);
}

// Between the unmounting and the erase nobody is to mount the disc again. Once the erase has begun
// the drive is busy; where it has not, the disc is mounted again by `discIsClosed`.
void KVController::eraseDisc(DRDevice& device) {
  services_.discIsOpened(device.bsdName());
  const std::optional<std::string> inUse =
      unmountVisibleVolumes(device, *services_.volumes, services_.sleep);
  if (inUse) {
    services_.discIsClosed(device.bsdName());
    refuseErase("EraseVolumeBusy", describeVolumeUsers(programsUsing(*inUse)));
    scanForMedia();
    return;
  }
  DREraseProgressPanel& panel = window_.eraseProgressPanel();
  panel.setDescription(localizedString("erasingdisk"));
  panel.beginProgressSheetForErase(DRErase::eraseForDevice(&device));
  services_.discIsClosed(device.bsdName());
}

void KVController::refuseErase(const std::string& messageKey, const std::string& detail) {
  systemLog("erase refused: %@ %@", messageKey, detail);
  Alert alert;
  alert.buttonKeys = {"OK"};
  alert.messageKey = messageKey;
  alert.informativeKey = messageKey + "Long";
  alert.detail = detail;
  window_.beginAlertSheet(alert, nullptr);
}

}  // namespace kelvane
