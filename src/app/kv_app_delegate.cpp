// SPDX-License-Identifier: GPL-2.0-or-later
#include "app/kv_app_delegate.h"

#include <utility>

#include "platform/foundation/main_thread.h"
#include "platform/foundation/user_defaults.h"
#include "services/update_check.h"

namespace kelvane {

KVAppDelegate::KVAppDelegate(KVController& thecontroller, WindowOutlets& mainWindow,
                             UpdateSource updates)
    : thecontroller_(thecontroller), mainWindow_(mainWindow), updates_(std::move(updates)) {}

void KVAppDelegate::applicationDidFinishLaunching() {
  const bool isDisabled = UserDefaults::standard().boolForKey("disableUpdateCheck");
  if (!isDisabled && !updates_.versionEndpoint.empty()) {
    updateCheckRuns_ = true;
    updateCheck_ = std::jthread([this](const std::stop_token& stop) {
      performUpdateCheck(stop);
      updateCheckRuns_ = false;
    });
  }
  thecontroller_.initialiseController();
}

bool KVAppDelegate::applicationShouldOpenUntitledFile() {
  if (thecontroller_.allowMainWindowUnhide()) mainWindow_.makeKeyAndOrderFront();
  return false;
}

TerminateReply KVAppDelegate::applicationShouldTerminate() {
  if (thecontroller_.burnInProgress()) {
    mainWindow_.beep();
    return TerminateReply::Cancel;
  }
  if (thecontroller_.mediaIsMounted()) {
    // A volume that a program still uses stays open, and so does the application: the user has been
    // told.
    return thecontroller_.closeVolume() ? TerminateReply::Later : TerminateReply::Cancel;
  }
  return TerminateReply::Now;
}

void KVAppDelegate::performUpdateCheck(const std::stop_token& stop) {
  const std::string reply = fetchUpdateReply(updates_.versionEndpoint, updates_.patience, stop);
  if (buildNumberOf(reply) < kFirstNewerBuild) return;
  performOnMainThreadAndWait([this] { displayUpdateCheckDialog(); }, stop);
}

void KVAppDelegate::displayUpdateCheckDialog() {
  Alert alert;
  alert.style = Alert::Style::Informational;
  alert.buttonKeys = {"updatecheckdownload", "cancelbutton"};
  alert.messageKey = "updatecheck";
  alert.informativeKey = "updatechecklong";
  if (mainWindow_.runAlertModal(alert) == kAlertFirstButtonReturn + 1) return;
  mainWindow_.openURL(updates_.productPage);
}

}  // namespace kelvane
