// SPDX-License-Identifier: GPL-2.0-or-later
// KVController: a session on a CD, from the image to the end of the burn.
#include <filesystem>
#include <system_error>
#include <utility>

#include "app/file_reasons.h"
#include "app/kv_controller.h"
#include "app/warning_alert.h"
#include "burn/burn_properties.h"
#include "burn/imaging_verdict.h"
#include "burn/mkisofs_arguments.h"
#include "burn/mkisofs_device_name.h"
#include "burn/plain_reason.h"
#include "burn/producer.h"
#include "burn/progress_watcher.h"
#include "burn/volume_identifier.h"
#include "burn/volume_space.h"
#include "media/quellbrook.h"
#include "platform/foundation/bundle.h"
#include "platform/foundation/child_task.h"
#include "platform/foundation/own_files.h"
#include "platform/foundation/paths.h"
#include "platform/foundation/strings_table.h"
#include "platform/foundation/system_log.h"
#include "platform/recording/dr_burn.h"
#include "platform/recording/dr_device.h"

namespace kelvane {
namespace {

constexpr std::chrono::milliseconds kSettlingPoll{100};
constexpr char kImageBuilder[] = "mkisofs";
constexpr char kNoNextSession[] = "The drive does not say where the next session may begin.";

}  // namespace

void KVController::burnCD() {
  DRDevice& device = *currentDevice_.load();
  const std::string deviceName = mkisofsDeviceName(device, services_.devices());
  systemLog("devicename used:%@", deviceName);
  const std::optional<std::string> sessionString = quellbrook::sessionString(device);
  burnImagePath_ = paths::burnImage(tmpDirPath_);
  quellbrook::unmount(device, *services_.volumes);
  if (!sessionString) {
    // The changes are as good as ever: the drive may say so another time.
    systemLog("CD imaging refused. %@", kNoNextSession);
    refuseBurn("CreateTrackAbortedWithError", withPlainReason(kNoNextSession, tmpDirPath_));
    return;
  }

  if (const std::string reason = whyImagingIsUnsafe(*sessionString); !reason.empty()) {
    systemLog("CD imaging refused. %@", reason);
    refuseBurn("CreateTrackAbortedWithError", reason);
    return;
  }

  SessionImageRequest request;
  request.sessionString = *sessionString;
  request.volumeName = volumeIdentifierOf(window_.burnConfirmationDiskTitle());
  request.imagePath = burnImagePath_;
  request.hideListPath = paths::hideListFile(tmpDirPath_);
  request.deviceName = deviceName;
  request.tmpDirPath = tmpDirPath_;
  window_.setBurnMessage(localizedString("preparingdata"));
  const std::string errors = buildImage(mkisofsArguments(request));
  if (judgeImaging(errors) == ImagingVerdict::Failed) {
    imagingFailed(errors);
    return;
  }
  // What is no image of a volume is burned as it is.
  const uint32_t sessionStart = sessionStartIn(*sessionString);
  if (sessionStart > 0) makeVolumesEndWithSession(burnImagePath_, sessionStart);
  // Somebody may have mounted the disc while the image was built.
  if (!discIsOursAlone()) {
    removeOwn(burnImagePath_);
    return;
  }
  if (!device.acquireExclusiveAccess()) {
    systemLog(
        "WARNING! Exclusive access to burning device denied after CD imaging! Burn is likely to "
        "fail!");
  }
  systemLog("cd imaging finished successfully.");
  window_.setBurnMessage(localizedString("burningchangescd"));
  waitUntilMediumHasSettled();
  startCDBurn();
}

std::string KVController::buildImage(const std::vector<std::string>& arguments) {
  const auto program = Bundle::mainBundle().pathForAuxiliaryExecutable(kImageBuilder);
  if (!program) return "The program that builds the session image is missing.";
  ProgressWatcher watcher;
  watcher.startWatching(burnImagePath_, sizetoburn_, &window_.burnProgressIndicator());
  ChildTask task;
  task.setArguments(arguments);
  task.setLaunchPath(*program);
  // A Ctrl-C or a closed terminal would end it in the middle, and it says nothing then.
  task.setSession(ChildTask::Session::OfItsOwn);
  if (!task.launch()) return task.launchError();
  task.waitUntilExit();
  watcher.stopWatching();
  const std::string errors = task.readStandardErrorToEnd();
  // The image is a part of itself, and nothing that mkisofs wrote tells it.
  return task.wasSignalled() ? errors + "mkisofs was killed before the image was complete.\n"
                             : errors;
}

void KVController::waitUntilMediumHasSettled() {
  while (currentDevice_.load()->mediaIsTransitioning()) services_.sleep(kSettlingPoll);
}

void KVController::startCDBurn() {
  auto producer = std::make_unique<Producer>();
  producer->setFilePath(burnImagePath_);
  const DRMSF length = producer->fileSize();
  myBurn_ = DRBurn::burnForDevice(currentDevice_);
  myBurn_->setProperties(cdBurnProperties(window_.burnSpeedTag()));
  myBurn_->setAppendable(true);
  myBurn_->setVerifyDisc(false);
  auto track = std::make_unique<DRTrack>(std::move(producer));
  track->setProperties(imageTrackProperties(length));
  myBurn_->writeLayout(std::move(track));
}

// What mkisofs reads and writes lies under names that others can foresee. Empty where all of it is
// ours; the image is then made, so that it stays ours.
std::string KVController::whyImagingIsUnsafe(const std::string& sessionString) const {
  if (std::string reason = whyOverlayIsUnsafe(); !reason.empty()) return reason;
  if (sessionString != "0") {
    if (std::string reason = whyHideListIsUnsafe(); !reason.empty()) return reason;
  }
  if (makeOwnFile(burnImagePath_)) return {};
  if (plainFileState(burnImagePath_) == PathState::Foreign) {
    return reasonForeignItem(burnImagePath_);
  }
  return format(localizedString("ReasonImageNotMade", "The image %@ cannot be made."),
                burnImagePath_);
}

void KVController::imagingFailed(const std::string& errors) {
  const std::string text = asciiText(errors);
  systemLog("CD imaging failed with error! Error: %@", text);
  window_.burnProgressIndicator().stopAnimation();
  const std::string detail = withPlainReason(errors, tmpDirPath_);
  window_.beginAlertSheet(warningAlert("CreateTrackAbortedWithError", detail), nullptr);
  ejectMediaOfCurrentDevice();
  commonBurnCleanup();
}

void KVController::cdburnstatuschanged(const Notification& notification) {
  const auto* status = std::any_cast<DRBurnStatus>(&notification.userInfo);
  if (status == nullptr) return;
  const double percentComplete = status->DRStatusPercentCompleteKey.value_or(0.0);
  ProgressIndicator& bar = window_.burnProgressIndicator();
  if (percentComplete <= 0) {
    bar.setIndeterminate(true);
    bar.startAnimation();
  } else {
    bar.setIndeterminate(false);
    bar.setDoubleValue(percentComplete + 1.0);
  }
  const std::string& state = status->DRStatusStateKey;
  const bool ended = state == DRStatusStateDone || state == DRStatusStateFailed;
  if (ended && myBurn_) CDBurnFinished();
}

void KVController::CDBurnFinished() {
  const DRBurnStatus status = myBurn_->status();
  systemLog("cd burn finished with state: %@", status.DRStatusStateKey);
  removeOwn(burnImagePath_);
  if (DRDevice* device = currentDevice_) device->releaseExclusiveAccess();
  if (status.DRStatusStateKey == DRStatusStateFailed) {
    const std::string error =
        status.DRErrorStatusKey ? status.DRErrorStatusKey->DRErrorStatusErrorStringKey : "";
    systemLog("CD burning failed: %@", error);
    const std::string detail = withPlainReason(error, tmpDirPath_);
    window_.beginAlertSheet(warningAlert("CDBurnError", detail), nullptr);
  } else {
    burnEnd_ = BurnEnd::Succeeded;
  }
  commonBurnCleanup();
}

}  // namespace kelvane
