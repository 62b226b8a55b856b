// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/desktop/logout_inhibition.h"

#include <QCoreApplication>
#include <QDBusObjectPath>
#include <QDBusPendingCall>
#include <utility>

#include "platform/desktop/message_bus.h"
#include "platform/foundation/system_log.h"

namespace kelvane::desktop {
namespace {

constexpr uint kLogoutFlag = 1;

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
  QDBusConnection bus = sessionBus();
  QString path;  ///< Empty until granted.
  bool isReleased = false;
};

LogoutInhibition::LogoutInhibition(const std::string& why, std::function<void()> answered,
                                   std::chrono::milliseconds patience)
    : request_(std::make_shared<Request>()) {
  QDBusMessage method = QDBusMessage::createMethodCall(
      portalService(), QStringLiteral("/org/freedesktop/portal/desktop"),
      QStringLiteral("org.freedesktop.portal.Inhibit"), QStringLiteral("Inhibit"));
  const QString noWindow;
  method << noWindow << kLogoutFlag
         << QVariantMap{{QStringLiteral("reason"), QString::fromStdString(why)}};
  call(request_->bus, method, patience, QCoreApplication::instance(),
       [request = request_, answered = std::move(answered)](const QDBusMessage& answer) {
         if (answer.type() == QDBusMessage::ReplyMessage && !answer.arguments().isEmpty()) {
           const QString path = answer.arguments().constFirst().value<QDBusObjectPath>().path();
           if (request->isReleased) {
             closeRequest(request->bus, path);
           } else {
             request->path = path;
           }
         } else if (!isServiceAbsent(answer) && !request->isReleased) {
           systemLog("Logging out is not held off: %@", answer.errorMessage().toStdString());
         }
         if (answered && !request->isReleased) answered();
       });
}

LogoutInhibition::~LogoutInhibition() {
  request_->isReleased = true;
  if (isHeld()) closeRequest(request_->bus, request_->path);
}

bool LogoutInhibition::isHeld() const {
  return !request_->path.isEmpty();
}

}  // namespace kelvane::desktop
