// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

#include "desktop/fake_services.h"
#include "desktop/private_bus.h"
#include "foundation/application_fixture.h"
#include "foundation/turn_until.h"
#include "media/recorded_log.h"
#include "platform/desktop/message_bus.h"

namespace kelvane::test {

/// A test with a bus of its own.
class DesktopFixture : public ApplicationFixture {
 protected:
  static bool turnUntil(const std::function<bool()>& condition) {
    return test::turnUntil(condition);
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
