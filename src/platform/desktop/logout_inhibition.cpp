// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/desktop/logout_inhibition.h"

#include <QCoreApplication>
#include <QDBusObjectPath>
#include <QDBusPendingCall>
#include <QTimer>
#include <limits>
#include <utility>

#include "platform/desktop/message_bus.h"
#include "platform/foundation/system_log.h"

namespace kelvane::desktop {
namespace {

constexpr uint kLogoutFlag = 1;

// What has been granted can be given back only by the name that the answer gives it, so the answer
// is waited for even where nobody counts on it any more. To the bus this number means for ever.
constexpr std::chrono::milliseconds kHoweverLate{std::numeric_limits<int>::max()};

QString portalService() {
  return QStringLiteral("org.freedesktop.portal.Desktop");
}

void closeRequest(const QDBusConnection& bus, const QString& path) {
  bus.asyncCall(QDBusMessage::createMethodCall(portalService(), path,
                                               QStringLiteral("org.freedesktop.portal.Request"),
                                               QStringLiteral("Close")));
}

}  // namespace

/// What the inhibition and the answer to its call share: whichever comes second closes it.
struct LogoutInhibition::Request {
  /// The portal has answered, or has not in time: the first word of that counts.
  void settle(const std::string& refusal);

  QDBusConnection bus = sessionBus();
  QString path;  ///< Empty until granted.
  bool isReleased = false;
  bool isSettled = false;
  std::function<void()> answered;
};

void LogoutInhibition::Request::settle(const std::string& refusal) {
  if (isReleased || std::exchange(isSettled, true)) return;
  if (!refusal.empty()) systemLog("Logging out is not held off: %@", refusal);
  if (answered) answered();
}

LogoutInhibition::LogoutInhibition(const std::string& why, std::function<void()> answered,
                                   std::chrono::milliseconds patience)
    : request_(std::make_shared<Request>()) {
  request_->answered = std::move(answered);
  QDBusMessage method = QDBusMessage::createMethodCall(
      portalService(), QStringLiteral("/org/freedesktop/portal/desktop"),
      QStringLiteral("org.freedesktop.portal.Inhibit"), QStringLiteral("Inhibit"));
  const QString noWindow;
  method << noWindow << kLogoutFlag
         << QVariantMap{{QStringLiteral("reason"), QString::fromStdString(why)}};
  call(request_->bus, method, kHoweverLate, QCoreApplication::instance(),
       [request = request_](const QDBusMessage& answer) {
         if (answer.type() != QDBusMessage::ReplyMessage || answer.arguments().isEmpty()) {
           const bool isAbsent = isServiceAbsent(answer);
           request->settle(isAbsent ? std::string() : answer.errorMessage().toStdString());
           return;
         }
         const QString path = answer.arguments().constFirst().value<QDBusObjectPath>().path();
         if (request->isReleased) {
           closeRequest(request->bus, path);
         } else {
           request->path = path;
           request->settle({});
         }
       });
  QTimer::singleShot(patience, QCoreApplication::instance(),
                     [request = request_] { request->settle("no answer in time"); });
}

LogoutInhibition::~LogoutInhibition() {
  request_->isReleased = true;
  if (isHeld()) closeRequest(request_->bus, request_->path);
}

bool LogoutInhibition::isHeld() const {
  return !request_->path.isEmpty();
}

}  // namespace kelvane::desktop
