// SPDX-License-Identifier: GPL-2.0-or-later
// KVController: the answer to the confirmation sheet, the start of a burn, and the two clean-ups.
#include <filesystem>
#include <system_error>
#include <typeinfo>

#include "app/kv_controller.h"
#include "platform/foundation/main_thread.h"
#include "platform/foundation/paths.h"
#include "platform/foundation/strings_table.h"
#include "platform/foundation/system_log.h"
#include "platform/foundation/user_defaults.h"
#include "platform/recording/dr_device.h"
#include "platform/recording/dr_media_types.h"

namespace kelvane {
namespace {

namespace fs = std::filesystem;

constexpr std::chrono::milliseconds kBarAnimationDelay{1600};

void removeIgnoringFailure(const std::string& path) {
  std::error_code failure;
  fs::remove_all(path, failure);
}

bool isDVDForGrowisofs(const std::optional<std::string>& mediaType) {
  return mediaType == DRDeviceMediaTypeDVDR || mediaType == DRDeviceMediaTypeDVDRW ||
         mediaType == DRDeviceMediaTypeDVDPlusRW;
}

}  // namespace

void KVController::burnConfirmationDidConfirm() {
  window_.endBurnConfirmationSheet();
  window_.orderOutBurnConfirmationPanel();
  performOnMainThread([this] { burn(); });
}

void KVController::burnConfirmationDidCancel() {
  window_.endBurnConfirmationSheet();
  window_.orderOutBurnConfirmationPanel();
  cleanupWithoutBurn();
  // The clean-up has replied already; the second reply belongs to this road.
  window_.replyToApplicationShouldTerminate(true);
}

void KVController::burn() {
  // The disc may have left the drive while the question stood; the clean-up has run then.
  if (currentDevice_ == nullptr) {
    window_.beep();
    return;
  }
  setBurnInProgress(true);
  window_.setHeaderLine(localizedString("burningdisk"));
  window_.setBurnMessage(localizedString("burnpreparing"));
  showBurnView();
  window_.burnProgressIndicator().setIndeterminate(true);
  performAfterDelay(kBarAnimationDelay,
                    [this] { window_.burnProgressIndicator().startAnimation(); });
  if (UserDefaults::standard().boolForKey("noappledoublefiles")) removeAppleDoubleFiles();
  if (isDVDForGrowisofs(currentDevice()->mediaType())) {
    burnDVD();
  } else {
    burnCD();
  }
}

void KVController::removeAppleDoubleFiles() {
  std::vector<fs::path> companions;
  std::error_code failure;
  for (fs::recursive_directory_iterator entry(tmpDirPath_, failure), end; !failure && entry != end;
       entry.increment(failure)) {
    if (entry->path().filename().string().starts_with("._")) companions.push_back(entry->path());
  }
  for (const fs::path& companion : companions) {
    systemLog(
        "AppleDouble files suppressed. Resourceforks and extended attributes will not be "
        "preserved.");
    removeIgnoringFailure(companion.string());
  }
}

void KVController::removeOverlayAndHideList() {
  if (tmpDirPath_.empty()) return;
  removeIgnoringFailure(tmpDirPath_);
  removeIgnoringFailure(paths::hideListFile(tmpDirPath_));
}

void KVController::ejectMediaOfCurrentDevice() {
  DRDevice* device = currentDevice_;
  if (device == nullptr) return;
  services_.discWillBeEjected(device->bsdName());
  // Where the disc was still mounted out of sight until now (a closed disc with one track is not
  // released before the burn), its folder could not be removed earlier.
  removeIgnoringFailure(paths::hiddenMountFolder());
  device->ejectMedia();
}

void KVController::giveUpCurrentDevice() {
  DRDevice* device = currentDevice_.exchange(nullptr);
  if (device != nullptr) services_.discIsClosed(device->bsdName());
}

void KVController::cleanupWithoutBurn() {
  setMediaIsMounted(false);
  setOpenButtonCaption(localizedString("buttonopen"));
  removeOverlayAndHideList();
  DRDevice* device = currentDevice_;
  if (device != nullptr && typeid(*device) == typeid(DRDevice)) {
    device->acquireExclusiveAccess();
    device->releaseExclusiveAccess();
  }
  ejectMediaOfCurrentDevice();
  giveUpCurrentDevice();
  scanForMedia();
  removeIgnoringFailure(paths::hiddenMountFolder());
  window_.replyToApplicationShouldTerminate(true);
}

void KVController::commonBurnCleanup() {
  setBurnInProgress(false);
  window_.burnProgressIndicator().stopAnimation();
  removeOverlayAndHideList();
  removeIgnoringFailure(paths::hiddenMountFolder());
  setMediaIsMounted(false);
  setOpenButtonCaption(localizedString("buttonopen"));
  ejectMediaOfCurrentDevice();
  giveUpCurrentDevice();
  scanForMedia();
  window_.replyToApplicationShouldTerminate(true);
}

void KVController::burnDVD() {
  // Writing to DVDs is not built yet. The user's changes are not thrown away for that: they are
  // moved to where no clean-up finds them.
  const std::string kept = tmpDirPath_ + ".kept";
  std::error_code failure;
  fs::rename(tmpDirPath_, kept, failure);
  Alert alert;
  alert.buttonKeys = {"OK"};
  alert.messageKey = "DVDBurnError";
  alert.informativeKey = "DVDBurnErrorLong";
  alert.detail = "This version cannot write to DVDs yet. Your changes are kept in " + kept + ".";
  window_.beginAlertSheet(alert, nullptr);
  commonBurnCleanup();
}

}  // namespace kelvane
