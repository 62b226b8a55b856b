// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

#include "desktop/fake_services.h"
#include "desktop/private_bus.h"
#include "foundation/application_fixture.h"
#include "media/recorded_log.h"
#include "platform/desktop/message_bus.h"

namespace kelvane::test {

/// A test with a bus of its own.
class DesktopFixture : public ApplicationFixture {
 protected:
  /// Lets the event loop turn until the condition holds.
  static void turnUntil(const std::function<bool()>& condition) {
    while (!condition()) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
  }

  /// Lets every message arrive that has been sent by now: a later one has made its way.
  void turn() {
    bool arrived = false;
    QDBusMessage ping = QDBusMessage::createMethodCall(
        bus_.services().baseService(), QStringLiteral("/"),
        QStringLiteral("org.freedesktop.DBus.Peer"), QStringLiteral("Ping"));
    QObject context;
    desktop::call(desktop::sessionBus(), ping, desktop::kPatience, &context,
                  [&arrived](const QDBusMessage&) { arrived = true; });
    turnUntil([&arrived] { return arrived; });
  }

  PrivateBus bus_;
  RecordedLog log_;
};

/// Short enough for a test, for services that never answer.
inline constexpr std::chrono::milliseconds kShortPatience{50};

}  // namespace kelvane::test
