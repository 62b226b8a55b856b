// SPDX-License-Identifier: GPL-2.0-or-later
//
// window_text: says what a screen reader finds in the windows that are shown, a line each:
// "role|name|description|text". The AT-SPI bus is found through the session's bus.
// Exit status 1: there is no such bus.

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusInterface>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusReply>
#include <QStringList>
#include <cstdint>
#include <cstdio>

/// What AT-SPI names things by: the program's name on the bus, and the thing's in the program.
struct Accessible {
  QString program;
  QDBusObjectPath path;
};
Q_DECLARE_METATYPE(Accessible)

// Qt finds these by their types.
QDBusArgument& operator<<(QDBusArgument& message, const Accessible& accessible) {
  message.beginStructure();
  message << accessible.program << accessible.path;
  message.endStructure();
  return message;
}

const QDBusArgument& operator>>(const QDBusArgument& message, Accessible& accessible) {
  message.beginStructure();
  message >> accessible.program >> accessible.path;
  message.endStructure();
  return message;
}

namespace {

constexpr char kAccessible[] = "org.a11y.atspi.Accessible";
constexpr char kText[] = "org.a11y.atspi.Text";
constexpr char kBusName[] = "accessibility";

QDBusMessage ask(const Accessible& whom, const char* interface, const char* method,
                 const QVariantList& arguments = {}) {
  QDBusMessage call = QDBusMessage::createMethodCall(
      whom.program, whom.path.path(), QLatin1String(interface), QLatin1String(method));
  call.setArguments(arguments);
  return QDBusConnection(QLatin1String(kBusName)).call(call);
}

QString property(const Accessible& whom, const char* name) {
  const QDBusReply<QDBusVariant> reply = ask(whom, "org.freedesktop.DBus.Properties", "Get",
                                             {QLatin1String(kAccessible), QLatin1String(name)});
  return reply.value().variant().toString();
}

QString textOf(const Accessible& whom) {
  const QDBusReply<QStringList> interfaces = ask(whom, kAccessible, "GetInterfaces");
  if (!interfaces.value().contains(QLatin1String(kText))) return {};
  return QDBusReply<QString>(ask(whom, kText, "GetText", {0, -1})).value();
}

bool isShown(const Accessible& whom) {
  constexpr unsigned kShowing = 25;  // AtspiStateType
  const QDBusReply<QList<uint>> states = ask(whom, kAccessible, "GetState");
  return !states.value().isEmpty() && ((states.value().first() >> kShowing) & 1U) != 0;
}

QList<Accessible> childrenOf(const Accessible& whom) {
  return QDBusReply<QList<Accessible>>(ask(whom, kAccessible, "GetChildren")).value();
}

void tell(const Accessible& whom) {
  if (!isShown(whom)) return;
  const QString role = QDBusReply<QString>(ask(whom, kAccessible, "GetRoleName")).value();
  QString line =
      QStringList{role, property(whom, "Name"), property(whom, "Description"), textOf(whom)}.join(
          QLatin1Char('|'));
  line.replace(QLatin1Char('\n'), QLatin1Char(' '));
  std::puts(line.toUtf8().constData());
  for (const Accessible& child : childrenOf(whom)) tell(child);
}

bool connectToScreenReaders() {
  const Accessible launcher{QStringLiteral("org.a11y.Bus"), QDBusObjectPath("/org/a11y/bus")};
  QDBusMessage call =
      QDBusMessage::createMethodCall(launcher.program, launcher.path.path(),
                                     QStringLiteral("org.a11y.Bus"), QStringLiteral("GetAddress"));
  const QDBusReply<QString> address = QDBusConnection::sessionBus().call(call);
  if (!address.isValid()) {
    std::fprintf(stderr, "window_text: %s\n", address.error().message().toUtf8().constData());
    return false;
  }
  return QDBusConnection::connectToBus(address.value(), QLatin1String(kBusName)).isConnected();
}

}  // namespace

int main(int count, char** words) {
  const QCoreApplication application(count, words);
  qDBusRegisterMetaType<Accessible>();
  qDBusRegisterMetaType<QList<Accessible>>();
  if (!connectToScreenReaders()) return 1;
  const Accessible desktop{QStringLiteral("org.a11y.atspi.Registry"),
                           QDBusObjectPath("/org/a11y/atspi/accessible/root")};
  // A program itself is never shown, its windows are.
  for (const Accessible& program : childrenOf(desktop)) {
    for (const Accessible& window : childrenOf(program)) tell(window);
  }
  return 0;
}
