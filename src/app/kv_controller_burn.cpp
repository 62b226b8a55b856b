// SPDX-License-Identifier: GPL-2.0-or-later
// KVController: the answer to the confirmation sheet, the start of a burn, and the two clean-ups.
#include <typeinfo>
#include <utility>

#include "app/burn_survey.h"
#include "app/disc_volumes.h"
#include "app/file_reasons.h"
#include "app/kv_controller.h"
#include "app/volume_users.h"
#include "app/warning_alert.h"
#include "burn/apple_double_files.h"
#include "burn/kept_changes.h"
#include "burn/mkisofs_device_name.h"
#include "burn/volume_identifier.h"
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

constexpr std::chrono::milliseconds kBarAnimationDelay{1600};

bool isDVDForGrowisofs(const std::optional<std::string>& mediaType) {
  return mediaType == DRDeviceMediaTypeDVDR || mediaType == DRDeviceMediaTypeDVDRW ||
         mediaType == DRDeviceMediaTypeDVDPlusRW;
}

}  // namespace

// Finds out what the burn in question would change, for the sheet.
void KVController::surveyBurn() {
  DRDevice& device = *currentDevice_.load();
  SurveySubject subject;
  subject.overlay = tmpDirPath_;
  subject.hideList = paths::hideListFile(tmpDirPath_);
  subject.disc = discMountPath_;
  subject.changes = changes_;
  if (UserDefaults::standard().boolForKey("noappledoublefiles")) {
    subject.appleDouble = AppleDouble::LeftOut;
  }
  if (isDVDForGrowisofs(device.mediaType())) subject.road = SurveySubject::Road::DVD;
  subject.device = &device;
  subject.volumes = services_.volumes;
  subject.deviceName = mkisofsDeviceName(device, services_.devices());
  subject.volumeName = volumeIdentifierOf(window_.burnConfirmationDiskTitle());
  subject.nominallyFree = nominallyFree_;
  survey_ = std::make_unique<BurnSurvey>(
      std::move(subject), [this](const BurnSummary& summary) { window_.setBurnSummary(summary); });
}

void KVController::endBurnQuestion() {
  window_.endBurnConfirmationSheet();
  window_.orderOutBurnConfirmationPanel();
  isBurnInQuestion_ = false;
  // It reads the disc and what the burn is made from; nobody does that any more then.
  survey_.reset();
}

void KVController::burnConfirmationDidConfirm() {
  endBurnQuestion();
  performLater([this] { burn(); });
}

void KVController::burnConfirmationDidCancel() {
  endBurnQuestion();
  cleanupWithoutBurn();
  // The clean-up has replied already; the second reply belongs to this road.
  window_.replyToApplicationShouldTerminate(true);
}

void KVController::burnConfirmationDidKeep() {
  endBurnQuestion();
  Alert alert = warningAlert("ChangesKept", putChangesAside());
  alert.style = Alert::Style::Informational;
  window_.beginAlertSheet(alert, nullptr);
  cleanupWithoutBurn();
}

// For a disc that was taken out while the question stood: the next one may be opened at once, and
// the answer would act on the changes of that.
void KVController::withdrawBurnQuestion() {
  if (isBurnInQuestion_) endBurnQuestion();
}

void KVController::burn() {
  // The disc may have left the drive while the question stood; the clean-up has run then.
  if (currentDevice_ == nullptr || burnInProgress_) {
    window_.beep();
    return;
  }
  setBurnInProgress(true);
  window_.setHeaderLine(localizedString("burningdisk"));
  window_.setBurnMessage(localizedString("burnpreparing"));
  showBurnView();
  window_.burnProgressIndicator().setIndeterminate(true);
  performAfterDelay(kBarAnimationDelay,
                    ifAlive([this] { window_.burnProgressIndicator().startAnimation(); }));
  if (UserDefaults::standard().boolForKey("noappledoublefiles") &&
      directoryState(tmpDirPath_) == PathState::Own) {
    removeAppleDoubleFiles(tmpDirPath_);
  }
  if (!discIsOursAlone()) return;
  if (isDVDForGrowisofs(currentDevice()->mediaType())) {
    burnDVD();
  } else {
    burnCD();
  }
}

// The burn is refused where the drive holds another disc by now, which the changes do not belong to
// and which may not even be blank, or where somebody uses a volume of the disc: a program that
// burns has the drive alone or not at all.
bool KVController::discIsOursAlone() {
  const std::optional<DeviceRecord> record = currentDeviceDictionary();
  if (record && holdsAnotherDisc(*record)) {
    systemLog("Burn refused. Another disc is in the drive than the one that was opened.");
    refuseBurn("BurnDiscChanged", {}, "BurnDiscChangedLong");
    return false;
  }
  const std::optional<std::string> inUse =
      unmountVisibleVolumes(*currentDevice(), *services_.volumes, services_.sleep);
  if (!inUse) return true;
  systemLog("Burn refused. %@ is in use.", *inUse);
  refuseBurn("BurnDiscInUse", describeVolumeUsers(programsUsing(*inUse)), "BurnDiscInUseLong");
  return false;
}

void KVController::removeOverlayAndHideList() {
  if (tmpDirPath_.empty()) return;
  removeOwn(tmpDirPath_);
  removeOwn(paths::hideListFile(tmpDirPath_));
}

void KVController::ejectMediaOfCurrentDevice() {
  DRDevice* device = currentDevice_;
  if (device == nullptr) return;
  services_.discWillBeEjected(device->bsdName());
  device->ejectMedia();
}

void KVController::giveUpCurrentDevice() {
  DRDevice* device = currentDevice_.exchange(nullptr);
  if (device != nullptr) services_.discIsClosed(device->bsdName());
}

void KVController::cleanupWithoutBurn() {
  withdrawBurnQuestion();
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
  // Where the disc was still mounted out of sight until now (a closed disc with one track is not
  // released before the burn), its folder could not be removed earlier.
  removeOwn(paths::hiddenMountFolder());
  giveUpCurrentDevice();
  scanForMedia();
  window_.replyToApplicationShouldTerminate(true);
}

// The programs that build the session read under names that others can foresee. Empty where what
// stands there is ours.
std::string KVController::whyOverlayIsUnsafe() const {
  if (directoryState(tmpDirPath_) == PathState::Own) return {};
  return reasonForeignItem(tmpDirPath_);
}

std::string KVController::whyHideListIsUnsafe() const {
  const std::string hideList = paths::hideListFile(tmpDirPath_);
  const PathState state = plainFileState(hideList);
  if (state == PathState::Foreign) return reasonForeignItem(hideList);
  if (hideListIsWhole_ && state == PathState::Own) return {};
  return reasonHideListNotWritten(hideList);
}

// Puts the changes to where no clean-up finds them, and says where; empty where there are none.
std::string KVController::putChangesAside() {
  const std::string kept = keepChanges(tmpDirPath_);
  if (kept.empty()) return {};
  // An alert may go unread: a pending quit ends the application behind it.
  const std::string where =
      format(localizedString("ChangesKeptWhere", "Your changes are kept in %@."), kept);
  systemLog("%@", where);
  if (kept == tmpDirPath_) tmpDirPath_.clear();  // No clean-up may find it.
  return where;
}

// Ends the burn before it has begun. Unlike a failure of the programs, this is not due to the
// changes, which are kept.
void KVController::refuseBurn(const std::string& messageKey, const std::string& reason,
                              const std::string& informativeKey) {
  window_.burnProgressIndicator().stopAnimation();
  Alert alert = warningAlert(messageKey, {});
  alert.informativeKey = informativeKey;
  alert.detail = reason;
  if (const std::string where = putChangesAside(); !where.empty()) alert.detail += " " + where;
  window_.beginAlertSheet(alert, nullptr);
  ejectMediaOfCurrentDevice();
  commonBurnCleanup();
}

}  // namespace kelvane
