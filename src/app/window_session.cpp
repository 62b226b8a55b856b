// SPDX-License-Identifier: GPL-2.0-or-later
#include "app/window_session.h"

#include <QApplication>
#include <QPointer>
#include <filesystem>
#include <utility>

#include "platform/foundation/main_thread.h"
#include "platform/recording/dr_device.h"
#include "platform/recording/dr_notification_center.h"
#include "platform/userfs/gm_user_file_system.h"
#include "ui/preferences_panel.h"

namespace kelvane {

WindowSession::WindowSession(std::unique_ptr<ApplicationCore> core, ControllerServices services,
                             const UpdateSource& updates)
    : core_(std::move(core)),
      services_(std::move(services)),
      controller_(window_, services_),
      delegate_(controller_, window_, updates),
      logout_(controller_, delegate_, window_),
      shutTrayNotice_(controller_, window_),
      signals_([this](int) { quitRequested(); }),
      instance_([this] { reopen(); }) {
  window_.setActions(&controller_);
  controller_.setLicenseController(&licenseController_);
  window_.setLicenseSource(licenseText);
  const bool looksForUpdates = !updates.versionEndpoint.empty();
  window_.setUpdateChecks(looksForUpdates ? UpdateChecks::Made : UpdateChecks::NotMade);
  wireQuitting();
  NotificationCenter::defaultCenter().addObserver(
      this, kGMUserFileSystemMountFailed, nullptr, [this](const Notification& notification) {
        const auto* reason = std::any_cast<std::string>(&notification.userInfo);
        performOnMainThread(
            [this, text = reason == nullptr ? std::string() : *reason] { mountFailed(text); });
      });
}

WindowSession::~WindowSession() {
  NotificationCenter::defaultCenter().removeObserver(this);
  DRNotificationCenter::currentRunLoopCenter().removeObserver(this);
  window_.setActions(nullptr);
}

void WindowSession::start() {
  controller_.awakeFromNib();
  delegate_.applicationDidFinishLaunching();
  if (!controller_.observesDrives()) return;
  // The first reports of the drives are on their way to whoever observes them by then.
  closedDrives_.emplace(window_);
  wireEmulatedDrives();
}

void WindowSession::wireQuitting() {
  window_.setQuitHandler([this] { quitRequested(); });
  const auto reply = [this](bool shouldTerminate) {
    if (!quitIsPending_ && !logout_.isPending()) return;
    // What has gone wrong is told by an alert, which may be begun right behind the reply.
    performOnMainThread([this, shouldTerminate] {
      window_.afterAlerts([this, shouldTerminate] { replied(shouldTerminate); });
    });
  };
  window_.setTerminateReplyHandler(reply);
  window_.setEraseEndHandler([reply] { reply(true); });
}

// A disc that has been opened in the meantime asks for a decision of its own, and the end of an
// erase is waited for whatever has been replied: that brings us here again.
void WindowSession::replied(bool shouldTerminate) {
  if (window_.isErasing()) return;
  if (shouldTerminate && logout_.somethingIsAtStake()) {
    const TerminateReply answer = delegate_.applicationShouldTerminate();
    if (answer == TerminateReply::Later) return;
    shouldTerminate = answer == TerminateReply::Now;
  }
  logout_.reply(shouldTerminate);
  if (std::exchange(quitIsPending_, false) && shouldTerminate) quit();
}

// An erase cannot be stopped, and nobody but its sheet would tell how it has ended.
void WindowSession::quitRequested() {
  if (window_.isErasing()) {
    quitIsPending_ = true;
    return;
  }
  switch (delegate_.applicationShouldTerminate()) {
    case TerminateReply::Cancel:
      return;
    case TerminateReply::Later:
      quitIsPending_ = true;
      return;
    case TerminateReply::Now:
      quit();
      return;
  }
}

void WindowSession::quit() {
  window_.allowClosing();
  // What the clean-up has queued on this thread comes first.
  performOnMainThread([window = QPointer(&window_)] {
    QCoreApplication::quit();
    // Where a window has refused to close, the application goes on.
    if (window) window->askBeforeClosing();
  });
}

void WindowSession::reopen() {
  licenseWindow_.makeKeyAndOrderFront();
  delegate_.applicationShouldOpenUntitledFile();
}

void WindowSession::wireEmulatedDrives() {
  DRNotificationCenter::currentRunLoopCenter().addObserver(
      this, [this](const Notification&) { offerEjectedDiscs(); }, DRDeviceStatusChangedNotification,
      nullptr);
}

void WindowSession::offerEjectedDiscs() {
  std::vector<DRDevice*> emptyDrives;
  std::vector<std::string> names;
  for (DRDevice* device : DRDevice::devices()) {
    const auto disc = device->emulatedDisc();
    if (!disc || !device->isValid() || device->mediaIsPresent()) continue;
    if (device->mediaIsTransitioning()) continue;  // It is being taken in.
    emptyDrives.push_back(device);
    names.push_back(std::filesystem::path(*disc).stem().string());
  }
  window_.setInsertableDiscs(names,
                             [emptyDrives](size_t index) { emptyDrives[index]->loadMedia(); });
}

void WindowSession::mountFailed(const std::string& reason) {
  controller_.mountFailed();
  Alert alert;
  alert.buttonKeys = {"OK"};
  alert.messageKey = "MountFailed";
  alert.informativeKey = "MountFailedLong";
  alert.detail = reason;
  window_.beginAlertSheet(alert, nullptr);
}

}  // namespace kelvane
