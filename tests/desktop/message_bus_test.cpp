// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/desktop/message_bus.h"

#include <QTemporaryDir>

#include "desktop/desktop_fixture.h"

namespace kelvane::desktop {
namespace {

using test::DesktopFixture;

class MessageBus : public DesktopFixture {};

TEST_F(MessageBus, IsTheOneThatTheEnvironmentNames) {
  EXPECT_TRUE(sessionBus().isConnected());
  EXPECT_TRUE(systemBus().isConnected());
  EXPECT_NE(sessionBus().baseService(), bus_.services().baseService());
}

TEST_F(MessageBus, IsNotStartedWhereThereIsNone) {
  const QTemporaryDir emptyFolder;
  qputenv("XDG_RUNTIME_DIR", emptyFolder.path().toUtf8());
  qunsetenv("DBUS_SESSION_BUS_ADDRESS");
  EXPECT_FALSE(sessionBus().isConnected());
  qunsetenv("XDG_RUNTIME_DIR");
  EXPECT_FALSE(sessionBus().isConnected());
}

TEST_F(MessageBus, IsFoundInTheRuntimeFolder) {
  const QString socket = QString::fromStdString(bus_.address()).section(QLatin1Char(','), 0, 0);
  const QString folder = socket.mid(QStringLiteral("unix:path=").size()).chopped(4);
  qputenv("XDG_RUNTIME_DIR", folder.toUtf8());
  qunsetenv("DBUS_SESSION_BUS_ADDRESS");
  EXPECT_TRUE(sessionBus().isConnected());
  qunsetenv("XDG_RUNTIME_DIR");
}

TEST_F(MessageBus, ThatHasGoneIsNoLongerConnected) {
  ASSERT_TRUE(sessionBus().isConnected());
  bus_.stop();
  turnUntil([] { return !sessionBus().isConnected(); });
}

TEST_F(MessageBus, ThatIsNotThereAnswersAtOnceAndFromTheEventLoop) {
  qputenv("DBUS_SESSION_BUS_ADDRESS", "disabled:");
  QObject context;
  bool isAbsent = false;
  const QDBusMessage method = QDBusMessage::createMethodCall(
      QStringLiteral("a.b"), QStringLiteral("/"), QStringLiteral("a.b"), QStringLiteral("C"));
  // A patience that no test outlives.
  call(sessionBus(), method, std::chrono::hours(24), &context,
       [&isAbsent](const QDBusMessage& answer) { isAbsent = isServiceAbsent(answer); });
  EXPECT_FALSE(isAbsent);
  turnUntil([&isAbsent] { return isAbsent; });
}

TEST_F(MessageBus, TellsAnAbsentServiceFromOneThatRefuses) {
  const auto error = [](QDBusError::ErrorType type) {
    return QDBusMessage::createError(type, QStringLiteral("text"));
  };
  EXPECT_TRUE(isServiceAbsent(error(QDBusError::ServiceUnknown)));
  EXPECT_TRUE(isServiceAbsent(error(QDBusError::Disconnected)));
  EXPECT_FALSE(isServiceAbsent(error(QDBusError::AccessDenied)));
  EXPECT_FALSE(isServiceAbsent(error(QDBusError::NoReply)));
  EXPECT_FALSE(isServiceAbsent(QDBusMessage()));
}

}  // namespace
}  // namespace kelvane::desktop
