// SPDX-License-Identifier: GPL-2.0-or-later
#include "app/kv_app_delegate.h"

namespace kelvane {

KVAppDelegate::KVAppDelegate(KVController& thecontroller, WindowOutlets& mainWindow)
    : thecontroller_(thecontroller), mainWindow_(mainWindow) {}

void KVAppDelegate::applicationDidFinishLaunching() {
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

}  // namespace kelvane
