// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QObject>
#include <memory>

#include "app/kv_app_delegate.h"
#include "platform/desktop/logout_inhibition.h"
#include "platform/desktop/session_monitor.h"

class QEventLoop;
class QSessionManager;

namespace kelvane {

/// Answers for the application when the user's session is to end, by the same decision as when it
/// is asked to quit: a burn refuses, an open disc is closed first, and the session waits for what
/// the user answers then. It also waits for the end of an erase.
///
/// Where a session manager of the X Session Management Protocol runs the session, it is answered
/// through Qt; otherwise the desktop's portal is, by a LogoutInhibition. The application does not
/// quit by itself: should the log-out be given up elsewhere, it stays. Main thread only.
class LogoutDecision : public QObject {
 public:
  /// All are borrowed.
  LogoutDecision(KVController& controller, KVAppDelegate& delegate, WindowOutlets& window);

  /// Whether the end of the session waits for a reply.
  bool isPending() const { return waiting_ != nullptr || inhibition_ != nullptr; }
  /// The answer to a decision that was deferred; without effect where none is pending.
  void reply(bool shouldTerminate);

  /// Whether ending now would cost the user anything.
  bool somethingIsAtStake() const;

 private:
  TerminateReply decide();
  void sessionManagerAsks(QSessionManager& manager);
  bool waitForReply();
  void portalTells(desktop::SessionMonitor::State state);
  void tellThatABurnRuns();
  const char* reasonToStay() const;

  KVController& controller_;
  KVAppDelegate& delegate_;
  WindowOutlets& window_;
  bool isTold_ = false;            ///< That a burn runs; the alert is shown.
  bool mayEnd_ = false;            ///< What was replied to the loop below.
  QEventLoop* waiting_ = nullptr;  ///< While the session manager waits for the reply.
  std::unique_ptr<desktop::SessionMonitor> monitor_;
  std::unique_ptr<desktop::LogoutInhibition> inhibition_;
};

}  // namespace kelvane
