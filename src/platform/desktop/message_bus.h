// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <chrono>
#include <functional>

#include "platform/desktop/patience.h"

/// The services of the desktop that are reached over D-Bus.
///
/// Nothing here ever waits for a service: calls are sent, and their answers arrive with the event
/// loop of the thread that has sent them.
namespace kelvane::desktop {

/// The bus of the user's session, where DBUS_SESSION_BUS_ADDRESS or $XDG_RUNTIME_DIR/bus says it
/// is. Not connected where there is none: no bus is ever started.
QDBusConnection sessionBus();

/// The bus of the machine, at DBUS_SYSTEM_BUS_ADDRESS or its usual place; not connected where there
/// is none.
QDBusConnection systemBus();

/// Sends a method call. `answered` hears the reply, or an error message: what the service refused
/// with, that it is absent, or that it has not answered in time. It is called exactly once, from
/// the event loop, unless `context` is deleted before.
void call(const QDBusConnection& bus, const QDBusMessage& method,
          std::chrono::milliseconds patience, QObject* context,
          std::function<void(const QDBusMessage& answer)> answered);

/// Whether the answer says that no such service exists, as opposed to one that refuses.
bool isServiceAbsent(const QDBusMessage& answer);

}  // namespace kelvane::desktop
