// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/desktop/running_instance.h"

#include <QEventLoop>
#include <QVariantMap>
#include <utility>

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

class RunningInstance::Object : public QObject {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

 public:
  explicit Object(std::function<void()> activated) : activated_(std::move(activated)) {}

  QDBusConnection bus = sessionBus();

 public Q_SLOTS:
  void Activate(const QVariantMap& /*platformData*/) { activated_(); }

 private:
  std::function<void()> activated_;
};

RunningInstance::RunningInstance(std::function<void()> activated)
    : object_(std::make_unique<Object>(std::move(activated))) {
  if (!object_->bus.isConnected()) return;
  object_->bus.registerObject(objectPath(), object_.get(), QDBusConnection::ExportAllSlots);
  call(object_->bus, toBus(QStringLiteral("RequestName")) << applicationName() << kDoNotQueue,
       kPatience, object_.get(), [](const QDBusMessage&) {});
}

RunningInstance::~RunningInstance() {
  if (!object_->bus.isConnected()) return;
  object_->bus.unregisterObject(objectPath());
  object_->bus.send(toBus(QStringLiteral("ReleaseName")) << applicationName());
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

#include "running_instance.moc"
