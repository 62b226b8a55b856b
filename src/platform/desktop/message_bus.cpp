// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/desktop/message_bus.h"

#include <QDBusError>
#include <QDBusPendingCallWatcher>
#include <QFile>
#include <QTimer>
#include <utility>

namespace kelvane::desktop {
namespace {

constexpr char kSystemBusSocket[] = "/run/dbus/system_bus_socket";

QString environment(const char* name) {
  return qEnvironmentVariable(name);
}

// A connection is kept for as long as the process lives, one for each address.
QDBusConnection busAt(const QString& address) {
  if (address.isEmpty()) return QDBusConnection(QString());
  const QString name = QStringLiteral("kelvanefs:") + address;
  QDBusConnection known(name);
  if (known.isConnected()) return known;
  // A bus that has gone, and come back under the same address, is connected to anew.
  QDBusConnection::disconnectFromBus(name);
  return QDBusConnection::connectToBus(address, name);
}

}  // namespace

QDBusConnection sessionBus() {
  QString address = environment("DBUS_SESSION_BUS_ADDRESS");
  const QString runtimeFolder = environment("XDG_RUNTIME_DIR");
  if (address.isEmpty() && !runtimeFolder.isEmpty()) {
    const QString socket = runtimeFolder + QStringLiteral("/bus");
    if (QFile::exists(socket)) address = QStringLiteral("unix:path=") + socket;
  }
  return busAt(address);
}

QDBusConnection systemBus() {
  QString address = environment("DBUS_SYSTEM_BUS_ADDRESS");
  if (address.isEmpty() && QFile::exists(QLatin1String(kSystemBusSocket))) {
    address = QStringLiteral("unix:path=") + QLatin1String(kSystemBusSocket);
  }
  return busAt(address);
}

void call(const QDBusConnection& bus, const QDBusMessage& method,
          std::chrono::milliseconds patience, QObject* context,
          std::function<void(const QDBusMessage& answer)> answered) {
  if (!bus.isConnected()) {
    QTimer::singleShot(0, context, [answered = std::move(answered)] {
      answered(QDBusMessage::createError(QDBusError::Disconnected, QStringLiteral("no bus")));
    });
    return;
  }
  auto* watcher = new QDBusPendingCallWatcher(
      bus.asyncCall(method, static_cast<int>(patience.count())), context);
  // A call that is on its way when the bus itself goes away never ends, so time is kept here, too.
  auto* clock = new QTimer(watcher);
  clock->setSingleShot(true);
  const auto end = [watcher, clock, answered = std::move(answered)](const QDBusMessage& answer) {
    clock->stop();
    watcher->blockSignals(true);
    watcher->deleteLater();
    answered(answer);
  };
  QObject::connect(watcher, &QDBusPendingCallWatcher::finished, context,
                   [watcher, end] { end(watcher->reply()); });
  QObject::connect(clock, &QTimer::timeout, context, [end] {
    end(QDBusMessage::createError(QDBusError::NoReply, QStringLiteral("no answer in time")));
  });
  clock->start(patience);
}

bool isServiceAbsent(const QDBusMessage& answer) {
  if (answer.type() != QDBusMessage::ErrorMessage) return false;
  switch (QDBusError(answer).type()) {
    case QDBusError::Disconnected:
    case QDBusError::NoServer:
    case QDBusError::ServiceUnknown:
    case QDBusError::UnknownInterface:
    case QDBusError::UnknownMethod:
    case QDBusError::UnknownObject:
      return true;
    default:
      return false;
  }
}

}  // namespace kelvane::desktop
