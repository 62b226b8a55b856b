// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/desktop/notifications.h"

#include <utility>

#include "platform/desktop/message_bus.h"
#include "platform/foundation/system_log.h"

namespace kelvane::desktop {
namespace {

constexpr int kServiceDecidesWhenItGoes = -1;

QString service() {
  return QStringLiteral("org.freedesktop.Notifications");
}

QString objectPath() {
  return QStringLiteral("/org/freedesktop/Notifications");
}

// The action that a click on the notification itself stands for.
QString defaultAction() {
  return QStringLiteral("default");
}

QVariantMap hintsFor(Notice::Kind kind) {
  const bool failed = kind == Notice::Kind::Failure;
  return {{QStringLiteral("desktop-entry"), QStringLiteral("kelvanefs")},
          {QStringLiteral("category"),
           failed ? QStringLiteral("transfer.error") : QStringLiteral("transfer.complete")}};
}

}  // namespace

Notifications::Notifications(std::function<void()> activated, QObject* parent)
    : QObject(parent), activated_(std::move(activated)) {}

void Notifications::show(const Notice& notice, std::chrono::milliseconds patience) {
  listen();
  QDBusMessage method =
      QDBusMessage::createMethodCall(service(), objectPath(), service(), QStringLiteral("Notify"));
  // The body is read as markup, in which a volume's name may not mean anything.
  const QString body = QString::fromStdString(notice.body).toHtmlEscaped();
  method << QStringLiteral("KelvaneFS") << shownId_ << QStringLiteral("kelvanefs")
         << QString::fromStdString(notice.summary) << body
         << QStringList{defaultAction(), QString()} << hintsFor(notice.kind)
         << kServiceDecidesWhenItGoes;
  call(sessionBus(), method, patience, this, [this](const QDBusMessage& answer) {
    if (answer.type() == QDBusMessage::ReplyMessage && !answer.arguments().isEmpty()) {
      shownId_ = answer.arguments().constFirst().toUInt();
    } else if (!isServiceAbsent(answer)) {
      systemLog("The desktop shows no notification: %@", answer.errorMessage().toStdString());
    }
  });
}

void Notifications::listen() {
  QDBusConnection bus = sessionBus();
  if (!bus.isConnected() || bus.name() == listensTo_) return;
  bus.connect(QString(), objectPath(), service(), QStringLiteral("ActionInvoked"), this,
              SLOT(actionInvoked(uint, QString)));
  listensTo_ = bus.name();
  shownId_ = 0;
}

void Notifications::actionInvoked(uint id, const QString& action) {
  if (id == shownId_ && action == defaultAction() && activated_) activated_();
}

}  // namespace kelvane::desktop
