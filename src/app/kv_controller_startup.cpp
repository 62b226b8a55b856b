// SPDX-License-Identifier: GPL-2.0-or-later
// KVController: its construction and the way to the first scan.
#include <utility>

#include "app/burn_survey.h"
#include "app/kv_controller.h"
#include "burn/dvd_burn.h"
#include "overlayfs/burn_fs_delegate.h"
#include "platform/foundation/bundle.h"
#include "platform/foundation/main_thread.h"
#include "platform/foundation/own_files.h"
#include "platform/foundation/paths.h"
#include "platform/foundation/strings_table.h"
#include "platform/recording/dr_burn.h"
#include "platform/recording/dr_device.h"
#include "platform/recording/dr_notification_center.h"
#include "platform/userfs/gm_user_file_system.h"
#include "services/kv_license_controller.h"

namespace kelvane {

KVController::KVController(WindowOutlets& window, const ControllerServices& services)
    : window_(window), services_(services), openButtonCaption_(localizedString("buttonopen")) {}

KVController::~KVController() {
  DRNotificationCenter::currentRunLoopCenter().removeObserver(this);
  if (mountWorker_.joinable()) mountWorker_.join();
  // Last, since the worker observes the volume that it mounts.
  NotificationCenter::defaultCenter().removeObserver(this);
  endInterruptedOpening();
}

// The application was quit while a disc was being opened. Its volume becomes a visible one again.
void KVController::endInterruptedOpening() {
  const DRDevice* device = currentDevice_;
  if (device == nullptr || mediaIsMounted_ || burnInProgress_) return;
  releaseOverlay();
  removeOverlayAndHideList();
  services_.discWillBeEjected(device->bsdName());
  removeOwn(paths::hiddenMountFolder());
  giveUpCurrentDevice();
}

void KVController::awakeFromNib() {
  tmpDirPath_.clear();
  setMediaIsMounted(false);
  setBurnInProgress(false);
  window_.centerWindows();
  window_.setHidden(HideableView::OpenButton, true);
  window_.setOpenButtonCaption(openButtonCaption_);
  window_.setFrame(ContentView::Message, inWindowRect, Movement::Direct);
  window_.setFrame(ContentView::DiskScroll, inWindowRect, Movement::Direct);
  window_.setFrame(ContentView::MountedItem, rightOfWindowRect, Movement::Direct);
  window_.setFrame(ContentView::Burn, rightOfWindowRect, Movement::Direct);
  window_.setMessage(localizedString("insertdisk"));
}

void KVController::initialiseController() {
  if (licenseController_ && !licenseController_->showLicenseIfNeeded()) return;
  setAllowMainWindowUnhide(true);
  window_.makeKeyAndOrderFront();
  std::string reason;
  if (services_.userFileSystemIsAvailable(&reason)) {
    initialiseDR();
    return;
  }
  Alert alert;
  alert.style = Alert::Style::Critical;
  alert.buttonKeys = {"Install", "Quit"};
  alert.messageKey = "InstallationIncomplete";
  alert.informativeKey = "InstallationIncompleteLong";
  alert.detail = reason;
  window_.beginAlertSheet(alert, [this](int returnCode) { installationAlertDidEnd(returnCode); });
}

void KVController::initialiseDR() {
  for (DRDevice* device : services_.devices()) device->acquireMediaReservation();
  services_.drivesWillBeObserved();
  DRNotificationCenter& center = DRNotificationCenter::currentRunLoopCenter();
  center.addObserver(
      this, [this](const Notification&) { scanForMedia(); }, DRDeviceStatusChangedNotification,
      nullptr);
  center.addObserver(
      this, [this](const Notification& notification) { cdburnstatuschanged(notification); },
      DRBurnStatusChangedNotification, nullptr);
  observesDrives_ = true;
}

void KVController::installationAlertDidEnd(int returnCode) {
  if (returnCode == kAlertFirstButtonReturn) {
    const auto installer = Bundle::mainBundle().pathForResource("MacFUSE", "pkg");
    if (installer) window_.openFile(*installer);
  }
  window_.terminate();
}

void KVController::setBurnInProgress(bool inProgress) {
  if (inProgress == burnInProgress_) return;
  burnInProgress_ = inProgress;
  if (inProgress) {
    burnEnd_ = BurnEnd::Failed;
    inhibition_ = services_.holdOffInterruptions(localizedString("burningdisk"));
  } else {
    inhibition_.reset();
    window_.burnDidEnd(burnEnd_);
  }
}

std::function<void()> KVController::ifAlive(std::function<void()> work) const {
  return [self = std::weak_ptr(self_), work = std::move(work)] {
    if (self.lock()) work();
  };
}

void KVController::performLater(std::function<void()> work) {
  performOnMainThread(ifAlive(std::move(work)));
}

std::optional<DeviceRecord> KVController::currentDeviceDictionary() const {
  const std::lock_guard lock(currentDeviceDictionaryMutex_);
  return currentDeviceDictionary_;
}

void KVController::setCurrentDeviceDictionary(const DeviceRecord& record) {
  const std::lock_guard lock(currentDeviceDictionaryMutex_);
  currentDeviceDictionary_ = record;
}

std::shared_ptr<GMUserFileSystem> KVController::tarnwickFS() const {
  const std::lock_guard lock(tarnwickFSMutex_);
  return tarnwickFS_;
}

void KVController::setTarnwickFS(std::shared_ptr<GMUserFileSystem> fileSystem) {
  const std::lock_guard lock(tarnwickFSMutex_);
  tarnwickFS_.swap(fileSystem);
}

void KVController::setOpenButtonCaption(const std::string& caption) {
  openButtonCaption_ = caption;
  window_.setOpenButtonCaption(caption);
}

}  // namespace kelvane
