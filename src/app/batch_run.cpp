// SPDX-License-Identifier: GPL-2.0-or-later
#include "app/batch_run.h"

#include <QCoreApplication>
#include <algorithm>
#include <chrono>
#include <cmath>
#include <filesystem>
#include <system_error>
#include <utility>

#include "app/kv_controller.h"
#include "app/summary_words.h"
#include "app/terminal_words.h"
#include "app/volume_stays_alert.h"
#include "burn/dvd_burn.h"
#include "platform/foundation/child_task.h"
#include "platform/foundation/main_thread.h"
#include "platform/foundation/paths.h"
#include "platform/foundation/placeholders.h"
#include "platform/foundation/strings_table.h"
#include "platform/recording/dr_burn_status.h"
#include "platform/recording/dr_device.h"
#include "platform/recording/dr_media_types.h"
#include "platform/recording/dr_notification_center.h"
#include "platform/userfs/gm_user_file_system.h"

namespace kelvane {
namespace {

constexpr std::chrono::milliseconds kBusyRetryInterval{200};
constexpr int kExitOfSignal = 128;
constexpr int kCommandNotStarted = 127;

}  // namespace

BatchRun::BatchRun(BatchOptions options) : options_(std::move(options)) {}

BatchRun::~BatchRun() {
  NotificationCenter::defaultCenter().removeObserver(this);
  DRNotificationCenter::currentRunLoopCenter().removeObserver(this);
}

void BatchRun::start(KVController& controller) {
  controller_ = &controller;
  // The list is looked at once the scan that changed it is through.
  mediaController().setChangeHandler([this] { performOnMainThread([this] { lookAtRecords(); }); });
  NotificationCenter::defaultCenter().addObserver(
      this, kGMUserFileSystemMountFailed, nullptr, [this](const Notification& notification) {
        const auto* reason = std::any_cast<std::string>(&notification.userInfo);
        performOnMainThread(
            [this, text = reason == nullptr ? std::string() : *reason] { mountFailed(text); });
      });
  NotificationCenter::defaultCenter().addObserver(
      this, kKelvaneDidFinishDVD, nullptr, [this](const Notification& notification) {
        const auto* burn = static_cast<const DVDBurn*>(notification.object);
        const bool successful = burn->burnErrors().empty();
        performOnMainThread([this, successful] {
          if (successful) outcome_.state = "burned";
        });
      });
  DRNotificationCenter::currentRunLoopCenter().addObserver(
      this, [this](const Notification& notification) { burnStatusChanged(notification); },
      DRBurnStatusChangedNotification, nullptr);
}

void BatchRun::lookAtRecords() {
  if (stage_ != Stage::Opening || controller_->currentDevice() != nullptr) return;
  const std::vector<DeviceRecord>& records = mediaController().arrangedObjects();
  size_t usable = 0;
  std::string refusals;
  for (const DeviceRecord& record : records) {
    if (isUsable(record)) {
      ++usable;
      continue;
    }
    if (record.unsupportedString->empty()) {
      discIsLoading();
      return;
    }
    refusals += record.description.volumename + ": " + *record.unsupportedString + " ";
  }
  if (usable == 1) return;  // The controller opens it without being asked.
  if (usable > 1) {
    controller_->mountBurnFS();
  } else if (records.empty()) {
    notOpened("There is no disc in the drive that can be read.");
  } else {
    refusals.pop_back();
    notOpened(refusals);
  }
}

void BatchRun::setFrame(ContentView view, Rect frame, Movement) {
  if (view == ContentView::MountedItem && frame == KVController::inWindowRect) volumeIsMounted();
}

void BatchRun::volumeIsMounted() {
  say("The disc is open at %@.", paths::overlayMountPoint());
  if (interruptedBy_) {
    closeVolume();
  } else {
    runCommand();
  }
}

void BatchRun::runCommand() {
  stage_ = Stage::Running;
  say("Running %@.", options_.command.front());
  command_ = std::make_unique<ChildTask>();
  command_->setLaunchPath(options_.command.front());
  command_->setArguments({options_.command.begin() + 1, options_.command.end()});
  command_->setWorkingDirectory(paths::overlayMountPoint());
  command_->setEnvironmentVariable("KELVANEFS_VOLUME", paths::overlayMountPoint());
  command_->setStandardStreams(options_.json ? ChildTask::StandardStreams::OwnOutputToError
                                             : ChildTask::StandardStreams::Own);
  command_->setEndHandler([this] { commandHasEnded(); });
  if (command_->launch()) return;
  commandFailed_ = true;
  outcome_.exitStatus = kCommandNotStarted;
  outcome_.error =
      format("%@ cannot be run: %@.", options_.command.front(), command_->launchError());
  say("%@", outcome_.error);
  closeVolume();
}

void BatchRun::commandHasEnded() {
  if (discHasGone_) return;  // The controller's own clean-up ends the run.
  const int status = command_->terminationStatus();
  if (status != 0 && !interruptedBy_) {
    commandFailed_ = true;
    outcome_.exitStatus = status;
    outcome_.error = format("%@ ended with status %i.", options_.command.front(), status);
    say("%@ The changes are discarded.", outcome_.error);
  }
  // Not from within the signal of the process that has just ended.
  performOnMainThread([this] { closeVolume(); });
}

void BatchRun::closeVolume() {
  if (stage_ == Stage::Ended) return;
  if (questionWaits_) {
    answerBurnQuestion();
    return;
  }
  if (endWaits_) {
    end();
    return;
  }
  if (stage_ != Stage::Closing) say("Closing the volume.");
  stage_ = Stage::Closing;
  if (interruptedBy_) {
    // What still uses the volume would hold it for ever, and its changes are not wanted.
    if (const auto fileSystem = controller_->tarnwickFS()) fileSystem->unmountLazily();
  } else {
    controller_->closeVolume();
  }
}

void BatchRun::volumeStays(const std::string& reason) {
  if (reason != announcedReason_) {
    say("Waiting for the volume to be free: %@", reason);
    announcedReason_ = reason;
  }
  performAfterDelay(kBusyRetryInterval, [this] {
    if (stage_ == Stage::Closing && controller_->tarnwickFS()) closeVolume();
  });
}

bool BatchRun::discards() const {
  return options_.discard || commandFailed_ || interruptedBy_;
}

// A command may unmount the volume itself. Whether its changes are wanted shows when it ends.
void BatchRun::beginBurnConfirmationSheet() {
  if (options_.name) setBurnConfirmationDiskTitle(*options_.name);
  if (stage_ == Stage::Running) {
    questionWaits_ = true;
  } else {
    answerBurnQuestion();
  }
}

void BatchRun::answerBurnQuestion() {
  questionWaits_ = false;
  stage_ = Stage::Confirming;
  if (discards()) {
    outcome_.summary.reset();
    discardChanges();
  } else if (outcome_.summary) {
    confirmBurn();
  }
}

void BatchRun::discardChanges() {
  say("Discarding the changes.");
  outcome_.state = "discarded";
  performOnMainThread([this] { controller_->burnConfirmationDidCancel(); });
}

// Nobody is asked, so nothing that speaks against it keeps the burn from being tried.
void BatchRun::setBurnSummary(const BurnSummary& summary) {
  if (discards() || !summary.isComplete) return;
  if (stage_ != Stage::Confirming && !questionWaits_) return;
  outcome_.summary = summary;
  if (!questionWaits_) confirmBurn();
}

void BatchRun::confirmBurn() {
  for (const std::string& line : linesOf(*outcome_.summary)) say("%@", line);
  stage_ = Stage::Burning;
  performOnMainThread([this] { controller_->burnConfirmationDidConfirm(); });
}

void BatchRun::setBurnMessage(const std::string& text) {
  say("%@", text);
  const DRDevice* device = controller_->currentDevice();
  const bool isWriting =
      text == localizedString("burningchangesdvd") || text == localizedString("burningchangescd");
  // Of a CD the second half of the bar is the burn itself, of a DVD all of it.
  if (isWriting && device != nullptr) {
    writingBeginsAt_ = isWritableCd(device->mediaType()) ? 1.0 : 0.0;
  }
  std::error_code failure;
  const std::string image = paths::burnImage(controller_->tmpDirPath());
  const uintmax_t size = std::filesystem::file_size(image, failure);
  if (!failure) outcome_.bytes = size;
}

void BatchRun::setDoubleValue(double value) {
  // A line every tenth is enough.
  constexpr double kBarEnd = 2.0;
  // While the image of a CD is built, the bar follows a guess of its size, which may be far off.
  if (!writingBeginsAt_ || !std::isfinite(value)) return;
  const double written = (value - *writingBeginsAt_) / (kBarEnd - *writingBeginsAt_);
  const int tenths = static_cast<int>(std::clamp(written, 0.0, 1.0) * 10);
  if (tenths <= announcedTenths_) return;
  announcedTenths_ = tenths;
  say("%i% written.", tenths * 10);
}

void BatchRun::burnStatusChanged(const Notification& notification) {
  const auto* status = std::any_cast<DRBurnStatus>(&notification.userInfo);
  if (status == nullptr) return;
  const DRDevice* device = controller_->currentDevice();
  // What the drive says afterwards may be old: not every drive sees the new session before the disc
  // is loaded again.
  if (status->DRStatusStateKey == DRStatusStatePreparing && device != nullptr) {
    const auto media = device->status().DRDeviceMediaInfoKey;
    if (media) sessionsBefore_ = media->DRDeviceMediaSessionCountKey;
  }
  if (status->DRStatusStateKey != DRStatusStateDone) return;
  outcome_.state = "burned";
  if (sessionsBefore_) outcome_.session = *sessionsBefore_ + 1;
}

void BatchRun::beginAlertSheet(const Alert& alert, std::function<void(int)>) {
  const std::string line = asLine(alert);
  if (isVolumeStaysAlert(alert)) {
    volumeStays(alert.detail.empty() ? line : alert.detail);
    return;
  }
  if (alert.messageKey == "DVDBurnedDoubtfully") {
    outcome_.warning = line;
    say("%@", line);
    return;
  }
  const bool isClosing = stage_ == Stage::Closing || stage_ == Stage::Running;
  if (isClosing && discards()) {
    // It tells what has become of changes that nobody wants.
    outcome_.state = "discarded";
    say("%@", line);
    return;  // The controller's own clean-up follows.
  }
  if (isClosing || stage_ == Stage::Burning || stage_ == Stage::Confirming) {
    outcome_.state = "burn-failed";
    outcome_.error = line;
    outcome_.exitStatus = static_cast<int>(BatchExit::BurnFailed);
    say("%@", line);
    return;  // The controller's own clean-up follows.
  }
  notOpened(line);
}

// The next scan tells what disc it is. A drive that never finds out is waited for until the user
// has enough of it.
void BatchRun::discIsLoading() {
  if (std::exchange(announcedLoading_, true)) return;
  say("Waiting for the drive to find out what disc is in it.");
}

void BatchRun::mountFailed(const std::string& reason) {
  if (stage_ != Stage::Opening) return;
  notOpened(reason);
  controller_->cleanupWithoutBurn();
}

void BatchRun::notOpened(const std::string& reason) {
  if (stage_ == Stage::Ended) return;
  outcome_.state = "not-opened";
  outcome_.error = reason;
  outcome_.exitStatus = static_cast<int>(BatchExit::NotOpened);
  say("The disc could not be opened: %@", reason);
  end();
}

void BatchRun::interrupt(int signalNumber) {
  if (stage_ == Stage::Burning) {
    say("A burn is going on; it is brought to its end first.");
    return;
  }
  if (stage_ == Stage::Ended) return;
  const bool again = interruptedBy_.has_value();
  interruptedBy_ = signalNumber;
  say("Interrupted: the changes are discarded.");
  if (stage_ == Stage::Running) {
    if (again) {
      command_->kill();
    } else {
      command_->terminate();
    }
  } else if (stage_ == Stage::Closing) {
    closeVolume();
  } else if (stage_ == Stage::Confirming) {
    if (outcome_.state != "discarded") discardChanges();
  } else if (controller_->currentDevice() == nullptr) {
    end();
  }
}

// What the command still does is for nothing.
void BatchRun::discHasGone() {
  discHasGone_ = true;
  if (stage_ == Stage::Running) command_->terminate();
}

void BatchRun::terminate() {
  end();
}

void BatchRun::replyToApplicationShouldTerminate(bool shouldTerminate) {
  if (!shouldTerminate) return;
  // A disc that is listed from now on, in another drive or put back, is not for the command.
  controller_->setSingleDisc(KVController::SingleDisc::Listed);
  // The command has unmounted the volume itself, and is still at work.
  endWaits_ = stage_ == Stage::Running && !discHasGone_;
  if (!endWaits_) end();
}

void BatchRun::end() {
  if (stage_ == Stage::Ended) return;
  stage_ = Stage::Ended;
  if (interruptedBy_) {
    outcome_.state = "interrupted";
    outcome_.error = format("Interrupted by signal %i.", *interruptedBy_);
    outcome_.exitStatus = kExitOfSignal + *interruptedBy_;
  } else if (commandFailed_) {
    outcome_.state = "command-failed";
  } else if (discHasGone_) {
    outcome_.state = "disc-gone";
    outcome_.error = "The disc disappeared while it was open. The changes are lost.";
    outcome_.exitStatus = static_cast<int>(BatchExit::BurnFailed);
    say("%@", outcome_.error);
  } else if (outcome_.state.empty()) {
    outcome_.state = "unchanged";
    say("Nothing has changed; nothing is burned.");
  } else if (outcome_.state == "burned" && outcome_.session) {
    say("Session %i has been burned.", *outcome_.session);
  } else if (outcome_.state == "burned") {
    say("The changes have been burned.");
  }
  // What the clean-up still has to do on this thread comes first.
  performOnMainThread([] { QCoreApplication::quit(); });
}

}  // namespace kelvane
