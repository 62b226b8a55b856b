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
#include "app/warning_alert.h"
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
constexpr char kForeignItem[] = "%@ is somebody else's, or not what KelvaneFS needs there.";

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
  isBurnInQuestion_ = false;
  performOnMainThread([this] { burn(); });
}

void KVController::burnConfirmationDidCancel() {
  window_.endBurnConfirmationSheet();
  window_.orderOutBurnConfirmationPanel();
  isBurnInQuestion_ = false;
  cleanupWithoutBurn();
  // The clean-up has replied already; the second reply belongs to this road.
  window_.replyToApplicationShouldTerminate(true);
}

// For a disc that was taken out while the question stood: the next one may be opened at once, and
// the answer would act on the changes of that.
void KVController::withdrawBurnQuestion() {
  if (!std::exchange(isBurnInQuestion_, false)) return;
  window_.endBurnConfirmationSheet();
  window_.orderOutBurnConfirmationPanel();
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

// The programs that build the session read under names that others can foresee. Empty where what
// stands there is ours.
std::string KVController::whyOverlayIsUnsafe() const {
  if (directoryState(tmpDirPath_) == PathState::Own) return {};
  return format(kForeignItem, tmpDirPath_);
}

std::string KVController::whyHideListIsUnsafe() const {
  const std::string hideList = paths::hideListFile(tmpDirPath_);
  const PathState state = plainFileState(hideList);
  if (state == PathState::Foreign) return format(kForeignItem, hideList);
  if (hideListIsWhole_ && state == PathState::Own) return {};
  return format("The list of deleted files, %@, could not be written.", hideList);
}

// Ends the burn before it has begun. Unlike a failure of the programs, this is not due to the
// changes, which are kept.
void KVController::refuseBurn(const std::string& messageKey, const std::string& reason) {
  window_.burnProgressIndicator().stopAnimation();
  Alert alert = warningAlert(messageKey, {});
  alert.informativeKey = "SessionNotPreparedLong";
  const std::string kept = keepChanges();
  alert.detail = kept.empty() ? reason : format("%@ Your changes are kept in %@.", reason, kept);
  window_.beginAlertSheet(alert, nullptr);
  ejectMediaOfCurrentDevice();
  commonBurnCleanup();
}

}  // namespace kelvane
