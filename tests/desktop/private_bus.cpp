// SPDX-License-Identifier: GPL-2.0-or-later
#include "desktop/private_bus.h"

#include <QFile>
#include <stdexcept>

namespace kelvane::test {
namespace {

// Nobody but this user is let in, and no service is ever started by the bus.
constexpr char kConfiguration[] = R"(<!DOCTYPE busconfig PUBLIC
 "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <listen>unix:path=%1/bus</listen>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow receive_sender="*"/>
    <allow own="*"/>
  </policy>
</busconfig>
)";

constexpr int kStartLimitMs = 30000;

const char* const kVariables[] = {"DBUS_SESSION_BUS_ADDRESS", "DBUS_SYSTEM_BUS_ADDRESS"};

}  // namespace

PrivateBus::PrivateBus() : services_(QString()) {
  const QString configuration = folder_.filePath(QStringLiteral("bus.conf"));
  QFile file(configuration);
  if (!file.open(QIODevice::WriteOnly)) throw std::runtime_error("no folder for the bus");
  file.write(QString::fromLatin1(kConfiguration).arg(folder_.path()).toUtf8());
  file.close();
  daemon_.start(QStringLiteral("dbus-daemon"),
                {QStringLiteral("--config-file=") + configuration, QStringLiteral("--nofork"),
                 QStringLiteral("--print-address")});
  // The address is said once the bus can be connected to.
  if (!daemon_.waitForReadyRead(kStartLimitMs)) throw std::runtime_error("no bus of our own");
  address_ = QString::fromUtf8(daemon_.readLine()).trimmed();
  for (const char* variable : kVariables) qputenv(variable, address_.toUtf8());
  services_ = QDBusConnection::connectToBus(address_, QStringLiteral("services:") + address_);
  if (!services_.isConnected()) throw std::runtime_error("the bus lets nobody in");
}

PrivateBus::~PrivateBus() {
  QDBusConnection::disconnectFromBus(services_.name());
  stop();
  for (const char* variable : kVariables) qputenv(variable, "disabled:");
}

void PrivateBus::stop() {
  daemon_.terminate();
  daemon_.waitForFinished(kStartLimitMs);
}

}  // namespace kelvane::test
