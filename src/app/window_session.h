// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <memory>
#include <optional>

#include "app/application_core.h"
#include "app/closed_drives.h"
#include "app/controller_services.h"
#include "app/kv_app_delegate.h"
#include "app/kv_controller.h"
#include "app/logout_decision.h"
#include "app/shut_tray_notice.h"
#include "app/termination_signals.h"
#include "platform/desktop/running_instance.h"
#include "services/kv_license_controller.h"
#include "services/update_source.h"
#include "ui/agreement_window.h"
#include "ui/main_window.h"

namespace kelvane {

/// The application with its window: window, controller and delegate wired together, and the
/// decision to quit carried out. Main thread only.
class WindowSession {
 public:
  /// `services` may borrow from the core. `updates` is where newer versions are looked for.
  WindowSession(std::unique_ptr<ApplicationCore> core, ControllerServices services,
                const UpdateSource& updates = UpdateSource::ofThisBuild());
  ~WindowSession();

  /// Starts the controller, which shows the window. Called in the event loop, so that the user can
  /// quit while the licence agreement is shown.
  void start();

 private:
  void wireQuitting();
  void wireEmulatedDrives();
  /// Offers to put the discs of empty emulated drives back.
  void offerEjectedDiscs();
  void quitRequested();
  /// The answer to a decision that was deferred, or an erase has ended that a decision waits for;
  /// once the user has read what came of it.
  void replied(bool shouldTerminate);
  void quit();
  /// The user has started the application once more.
  void reopen();
  void mountFailed(const std::string& reason);

  std::unique_ptr<ApplicationCore> core_;
  MainWindow window_;
  AgreementWindow licenseWindow_;
  KVLicenseController licenseController_{licenseWindow_, [this] { window_.terminate(); }};
  ControllerServices services_;
  std::optional<ClosedDrives> closedDrives_;
  KVController controller_;
  KVAppDelegate delegate_;
  LogoutDecision logout_;
  ShutTrayNotice shutTrayNotice_;
  TerminationSignals signals_;
  desktop::RunningInstance instance_;
  bool quitIsPending_ = false;
};

}  // namespace kelvane
