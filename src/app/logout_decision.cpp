// SPDX-License-Identifier: GPL-2.0-or-later
#include "app/logout_decision.h"

#include <QEventLoop>
#include <QGuiApplication>
#include <QSessionManager>

#include "app/warning_alert.h"
#include "platform/foundation/strings_table.h"

namespace kelvane {

using SessionState = desktop::SessionMonitor::State;

LogoutDecision::LogoutDecision(KVController& controller, KVAppDelegate& delegate,
                               WindowOutlets& window)
    : controller_(controller), delegate_(delegate), window_(window) {
  if (qGuiApp->sessionId().isEmpty()) {
    monitor_ = std::make_unique<desktop::SessionMonitor>(
        [this](SessionState state) { portalTells(state); });
    return;
  }
  // The session manager takes what has been said by the time that this returns for the answer.
  connect(
      qGuiApp, &QGuiApplication::commitDataRequest, this,
      [this](QSessionManager& manager) { sessionManagerAsks(manager); }, Qt::DirectConnection);
}

bool LogoutDecision::somethingIsAtStake() const {
  return controller_.burnInProgress() || controller_.mediaIsMounted() || window_.isErasing();
}

TerminateReply LogoutDecision::decide() {
  if (somethingIsAtStake()) window_.makeKeyAndOrderFront();
  // When it has ended the decision is made anew.
  if (window_.isErasing()) return TerminateReply::Later;
  const bool burns = controller_.burnInProgress();
  const TerminateReply answer = delegate_.applicationShouldTerminate();
  // Who logs out may not look at the window, and a beep says little about a log-out that fails.
  if (burns) tellThatABurnRuns();
  return answer;
}

void LogoutDecision::tellThatABurnRuns() {
  if (isTold_) return;
  isTold_ = true;
  window_.beginAlertSheet(warningAlert("LogoutDuringBurn", {}), [this](int) { isTold_ = false; });
}

void LogoutDecision::sessionManagerAsks(QSessionManager& manager) {
  if (waiting_ != nullptr || !somethingIsAtStake()) return;
  // Where the session manager lets nobody ask the user, it does not let itself be stopped either.
  if (!manager.allowsInteraction()) return;
  switch (decide()) {
    case TerminateReply::Now:
      return;
    case TerminateReply::Cancel:
      manager.cancel();
      return;
    case TerminateReply::Later:
      if (!waitForReply()) manager.cancel();
      return;
  }
}

bool LogoutDecision::waitForReply() {
  QEventLoop loop;
  waiting_ = &loop;
  mayEnd_ = false;
  loop.exec();
  waiting_ = nullptr;
  return mayEnd_;
}

void LogoutDecision::portalTells(SessionState state) {
  if (state != SessionState::QueryEnd) {
    inhibition_.reset();
    return;
  }
  if (!somethingIsAtStake()) {
    monitor_->acknowledge();
    return;
  }
  // The session manager waits a second for the acknowledgement, and closing a volume may take its
  // time, so holding off comes first.
  inhibition_ = std::make_unique<desktop::LogoutInhibition>(localizedString(reasonToStay()),
                                                            [this] { monitor_->acknowledge(); });
  decide();
}

const char* LogoutDecision::reasonToStay() const {
  if (controller_.burnInProgress()) return "burningdisk";
  return window_.isErasing() ? "erasingdisk" : "LogoutDiscOpen";
}

void LogoutDecision::reply(bool shouldTerminate) {
  inhibition_.reset();
  if (waiting_ == nullptr) return;
  mayEnd_ = shouldTerminate;
  waiting_->quit();
}

}  // namespace kelvane
