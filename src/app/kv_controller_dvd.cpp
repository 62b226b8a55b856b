// SPDX-License-Identifier: GPL-2.0-or-later
// KVController: a session on a DVD, from the preparation of a blank one to the end of growisofs.
#include <utility>

#include "app/kv_controller.h"
#include "app/warning_alert.h"
#include "burn/dvd_burn.h"
#include "burn/plain_reason.h"
#include "burn/volume_identifier.h"
#include "platform/foundation/bundle.h"
#include "platform/foundation/child_task.h"
#include "platform/foundation/paths.h"
#include "platform/foundation/placeholders.h"
#include "platform/foundation/strings_table.h"
#include "platform/foundation/system_log.h"
#include "platform/recording/dr_device.h"

namespace kelvane {
namespace {

constexpr std::chrono::milliseconds kSettlingPoll{100};
constexpr int kMostSettlingRounds = 300;
constexpr char kFormatter[] = "df";
constexpr int kProgramMissing = 127;  // As a shell reports it.

// Of all that growisofs reports, these two have a text of their own. They are compared as
// growisofs writes them.
std::string informativeKeyFor(const std::string& lastError) {
  if (lastError == ":-( FORMAT allocaion length isn't sane") return "DVDBurnErrorAllocLong";
  if (lastError == ":-( next session would cross 4GB boundary, aborting...") {
    return "DVDBurnErrorFull";
  }
  return "DVDBurnErrorLong";
}

std::string asList(const std::vector<std::string>& lines) {
  std::string list;
  for (const std::string& line : lines) list += (list.empty() ? "" : ", ") + line;
  return "(" + list + ")";
}

template <typename Lines>
std::string joined(const Lines& lines) {
  std::string text;
  for (const std::string& line : lines) text += (text.empty() ? "" : "\n") + line;
  return text;
}

// What growisofs and the image builder said, for the user: the file or limit in question is among
// it.
std::string wordsOf(const DVDBurn& burn) {
  const std::string words = joined(burn.remarks().lines());
  return words.empty() ? burn.burnErrors().back() : words;
}

// The program's exit status.
int runFormatter(DRDevice& device) {
  const auto program = Bundle::mainBundle().pathForAuxiliaryExecutable(kFormatter);
  if (!program) return kProgramMissing;
  ChildTask task;
  task.setLaunchPath(*program);
  task.setArguments({"-force", format("/dev/%@", device.bsdName())});
  // A format that is cut off by a Ctrl-C or a log-out leaves a disc that nothing can be done with.
  task.setSession(ChildTask::Session::OfItsOwn);
  {
    const DriveClaimHandover handover = device.handClaimOver(task);
    if (!task.launch()) return kProgramMissing;
  }
  task.waitUntilExit();
  return task.terminationStatus();
}

}  // namespace

void KVController::burnDVD() {
  std::string reason = whyOverlayIsUnsafe();
  if (reason.empty()) reason = whyHideListIsUnsafe();
  if (!reason.empty()) {
    systemLog("DVD burn refused. %@", reason);
    refuseBurn("DVDBurnError", reason);
    return;
  }
  DRDevice& device = *currentDevice_.load();
  if (device.mediaIsBlank() && device.mediaType() == DRDeviceMediaTypeDVDRW) {
    if (!prepareBlankDVD(device)) {
      ejectMediaOfCurrentDevice();
      window_.beginAlertSheet(warningAlert("DVDDeviceNotResponding", {}), nullptr);
      commonBurnCleanup();
      return;
    }
  }
  startDVDBurn(device);
}

// Formats the disc, and waits up to 30 seconds for the drive to get used to it. False where it does
// not. Whether the formatting succeeds decides nothing.
bool KVController::prepareBlankDVD(DRDevice& device) {
  window_.setBurnMessage(localizedString("preparingemptydisk"));
  device.beginRecording();
  const int status = runFormatter(device);
  device.endRecording();
  systemLog("preparing finished with status: %i", status);
  bool transitioning = device.mediaIsTransitioning();
  for (int round = 0; transitioning && round < kMostSettlingRounds; ++round) {
    services_.sleep(kSettlingPoll);
    transitioning = device.mediaIsTransitioning();
  }
  return !transitioning;
}

void KVController::startDVDBurn(DRDevice& device) {
  NotificationCenter::defaultCenter().addObserver(
      this, kKelvaneDidFinishDVD, nullptr,
      [this](const Notification& notification) { burnDVDDidFinish(notification); });
  DVDBurnParameters parameters;
  parameters.dvdvolumename = volumeIdentifierOf(window_.burnConfirmationDiskTitle());
  parameters.bsddevicepath = format("/dev/r%@", device.bsdName());
  parameters.sourcepath = tmpDirPath_;
  const bool consideredBlank = currentDeviceDictionary()->consideredBlank.value_or(false);
  parameters.burntoemptydisk = consideredBlank ? "YES" : "NO";
  parameters.overburn = "NO";
  parameters.progressIndicator = &window_.burnProgressIndicator();
  parameters.currentDevice = &device;
  parameters.hideFilePath = paths::hideListFile(tmpDirPath_);
  parameters.burnSpeed = window_.burnSpeedTag();
  window_.setBurnMessage(localizedString("burningchangesdvd"));
  // Nobody is to ask the drive anything while it is written to.
  device.beginRecording();
  myDVDBurn_ = std::make_unique<DVDBurn>(std::move(parameters), *services_.volumes);
  myDVDBurn_->startDVDBurnInOwnThread();
}

// On the burn's thread.
void KVController::burnDVDDidFinish(const Notification& notification) {
  NotificationCenter::defaultCenter().removeObserver(this, kKelvaneDidFinishDVD, nullptr);
  const auto* burn = static_cast<const DVDBurn*>(notification.object);
  performLater([this, burn] { finishDVDBurn(*burn); });
}

void KVController::finishDVDBurn(const DVDBurn& burn) {
  currentDevice_.load()->endRecording();
  const std::vector<std::string>& errors = burn.burnErrors();
  if (!errors.empty()) {
    systemLog("burnerrors: %@", asList(errors));
    ejectMediaOfCurrentDevice();
    Alert alert = warningAlert("DVDBurnError", withPlainReason(wordsOf(burn), tmpDirPath_));
    alert.informativeKey = informativeKeyFor(errors.back());
    window_.beginAlertSheet(alert, nullptr);
  } else {
    systemLog("DVDBurn finished successfully!");
    burnEnd_ = BurnEnd::Succeeded;
    if (const std::string doubts = joined(burn.remarks().doubts()); !doubts.empty()) {
      window_.beginAlertSheet(
          warningAlert("DVDBurnedDoubtfully", withPlainReason(doubts, tmpDirPath_)), nullptr);
    }
  }
  // A failure that the verdict has missed is not lost altogether.
  for (const std::string& remark : burn.remarks().lines()) systemLog("growisofs: %@", remark);
  myDVDBurn_.reset();
  commonBurnCleanup();
}

}  // namespace kelvane
