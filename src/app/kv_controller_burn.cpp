// SPDX-License-Identifier: GPL-2.0-or-later
// KVController: the answer to the confirmation sheet, the start of a burn, and the two clean-ups.
#include <fcntl.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <system_error>
#include <typeinfo>
#include <utility>

#include "app/kv_controller.h"
#include "platform/foundation/main_thread.h"
#include "platform/foundation/own_files.h"
#include "platform/foundation/paths.h"
#include "platform/foundation/placeholders.h"
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
  if (directoryState(tmpDirPath_) != PathState::Own) return;
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
  removeOwn(tmpDirPath_);
  removeOwn(paths::hideListFile(tmpDirPath_));
}

// Moves the overlay directory to where no clean-up finds it, and gives its new path. Where it
// cannot be moved, it stays where it is, and no clean-up will look there. Empty where there is
// none.
std::string KVController::keepChanges() {
  if (directoryState(tmpDirPath_) != PathState::Own) return {};
  constexpr int kMostNames = 100;
  for (int number = 0; number < kMostNames; ++number) {
    const std::string kept = tmpDirPath_ + ".kept" + (number == 0 ? "" : format("-%i", number));
    if (renameat2(AT_FDCWD, tmpDirPath_.c_str(), AT_FDCWD, kept.c_str(), RENAME_NOREPLACE) == 0) {
      return kept;
    }
    if (errno != EEXIST) break;
  }
  removeOwn(paths::hideListFile(tmpDirPath_));
  return std::exchange(tmpDirPath_, {});
}

void KVController::ejectMediaOfCurrentDevice() {
  DRDevice* device = currentDevice_;
  if (device == nullptr) return;
  services_.discWillBeEjected(device->bsdName());
  // Where the disc was still mounted out of sight until now (a closed disc with one track is not
  // released before the burn), its folder could not be removed earlier.
  removeOwn(paths::hiddenMountFolder());
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
  removeOwn(paths::hiddenMountFolder());
  window_.replyToApplicationShouldTerminate(true);
}

void KVController::commonBurnCleanup() {
  setBurnInProgress(false);
  window_.burnProgressIndicator().stopAnimation();
  removeOverlayAndHideList();
  removeOwn(paths::hiddenMountFolder());
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
  const std::string kept = keepChanges();
  Alert alert;
  alert.buttonKeys = {"OK"};
  alert.messageKey = "DVDBurnError";
  alert.informativeKey = "DVDBurnErrorLong";
  alert.detail = "This version cannot write to DVDs yet.";
  if (!kept.empty()) alert.detail += " Your changes are kept in " + kept + ".";
  window_.beginAlertSheet(alert, nullptr);
  commonBurnCleanup();
}

}  // namespace kelvane
