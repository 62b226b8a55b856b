// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/desktop/running_instance.h"

#include <QEventLoop>
#include <QVariantMap>
#include <utility>

#include "platform/desktop/application_object.h"
#include "platform/desktop/message_bus.h"

namespace kelvane::desktop {
namespace {

constexpr uint kDoNotQueue = 4;  // DBUS_NAME_FLAG_DO_NOT_QUEUE

QString applicationName() {
  return QStringLiteral("org.kelvanefs.kelvanefs");
}

QString objectPath() {
  return QStringLiteral("/org/kelvanefs/kelvanefs");
}

// The bus itself is spoken to as any other service is, without waiting for it.
QDBusMessage toBus(const QString& method) {
  return QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.DBus"),
                                        QStringLiteral("/org/freedesktop/DBus"),
                                        QStringLiteral("org.freedesktop.DBus"), method);
}

}  // namespace

RunningInstance::RunningInstance(std::function<void()> activated)
    : object_(std::make_unique<ApplicationObject>(std::move(activated))) {
  QDBusConnection bus = sessionBus();
  if (!bus.isConnected()) return;
  bus.registerObject(objectPath(), object_.get(), QDBusConnection::ExportAllSlots);
  call(bus, toBus(QStringLiteral("RequestName")) << applicationName() << kDoNotQueue, kPatience,
       object_.get(), [](const QDBusMessage&) {});
}

RunningInstance::~RunningInstance() {
  QDBusConnection bus = sessionBus();
  if (!bus.isConnected()) return;
  bus.unregisterObject(objectPath());
  bus.send(toBus(QStringLiteral("ReleaseName")) << applicationName());
}

bool showRunningInstance(std::chrono::milliseconds patience) {
  QEventLoop loop;
  const QDBusMessage method = QDBusMessage::createMethodCall(
      applicationName(), objectPath(), QStringLiteral("org.freedesktop.Application"),
      QStringLiteral("Activate"));
  bool isShown = false;
  call(sessionBus(), QDBusMessage(method) << QVariantMap(), patience, &loop,
       [&](const QDBusMessage& answer) {
         isShown = answer.type() == QDBusMessage::ReplyMessage;
         loop.quit();
       });
  loop.exec();
  return isShown;
}

}  // namespace kelvane::desktop
