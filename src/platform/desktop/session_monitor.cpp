// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/desktop/session_monitor.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCall>
#include <QObject>
#include <QVariantMap>
#include <utility>

#include "platform/desktop/message_bus.h"
#include "platform/foundation/system_log.h"

namespace kelvane::desktop {
namespace {

QString service() {
  return QStringLiteral("org.freedesktop.portal.Desktop");
}

QString objectPath() {
  return QStringLiteral("/org/freedesktop/portal/desktop");
}

QString inhibitInterface() {
  return QStringLiteral("org.freedesktop.portal.Inhibit");
}

QString nextToken() {
  static int count = 0;
  return QStringLiteral("kelvanefs%1").arg(++count);
}

/// The path that the portal makes of a caller's name and of the token that it chose.
QString sessionPath(const QDBusConnection& bus, const QString& token) {
  QString caller = bus.baseService().mid(1);
  caller.replace(QLatin1Char('.'), QLatin1Char('_'));
  return QStringLiteral("%1/session/%2/%3").arg(objectPath(), caller, token);
}

}  // namespace

class SessionMonitor::Listener : public QObject {
  Q_OBJECT

 public:
  Listener(std::function<void(State)> changed, std::chrono::milliseconds patience);
  ~Listener() override;

  void acknowledge();

 private Q_SLOTS:
  void stateChanged(const QDBusMessage& signal);

 private:
  std::function<void(State)> changed_;
  QDBusConnection bus_ = sessionBus();
  QString session_;  ///< The object path of this monitor.
};

SessionMonitor::Listener::Listener(std::function<void(State)> changed,
                                   std::chrono::milliseconds patience)
    : changed_(std::move(changed)) {
  if (!bus_.isConnected()) return;
  const QString token = nextToken();
  session_ = sessionPath(bus_, token);
  bus_.connect(service(), objectPath(), inhibitInterface(), QStringLiteral("StateChanged"), this,
               SLOT(stateChanged(QDBusMessage)));
  QDBusMessage method = QDBusMessage::createMethodCall(service(), objectPath(), inhibitInterface(),
                                                       QStringLiteral("CreateMonitor"));
  const QString noWindow;
  method << noWindow
         << QVariantMap{{QStringLiteral("handle_token"), token},
                        {QStringLiteral("session_handle_token"), token}};
  call(bus_, method, patience, this, [](const QDBusMessage& answer) {
    if (answer.type() == QDBusMessage::ReplyMessage || isServiceAbsent(answer)) return;
    systemLog("The end of the session will not be heard of: %@",
              answer.errorMessage().toStdString());
  });
}

SessionMonitor::Listener::~Listener() {
  if (session_.isEmpty()) return;
  bus_.asyncCall(QDBusMessage::createMethodCall(service(), session_,
                                                QStringLiteral("org.freedesktop.portal.Session"),
                                                QStringLiteral("Close")));
}

void SessionMonitor::Listener::acknowledge() {
  if (session_.isEmpty()) return;
  QDBusMessage method = QDBusMessage::createMethodCall(service(), objectPath(), inhibitInterface(),
                                                       QStringLiteral("QueryEndResponse"));
  method << QVariant::fromValue(QDBusObjectPath(session_));
  bus_.asyncCall(method);
}

void SessionMonitor::Listener::stateChanged(const QDBusMessage& signal) {
  const QVariantList arguments = signal.arguments();
  if (arguments.size() != 2) return;
  if (arguments[0].value<QDBusObjectPath>().path() != session_) return;
  const auto details = qdbus_cast<QVariantMap>(arguments[1]);
  const uint state = details.value(QStringLiteral("session-state")).toUInt();
  if (state >= static_cast<uint>(State::Running) && state <= static_cast<uint>(State::Ending)) {
    changed_(static_cast<State>(state));
  }
}

SessionMonitor::SessionMonitor(std::function<void(State)> changed,
                               std::chrono::milliseconds patience)
    : listener_(std::make_unique<Listener>(std::move(changed), patience)) {}

SessionMonitor::~SessionMonitor() = default;

void SessionMonitor::acknowledge() {
  listener_->acknowledge();
}

}  // namespace kelvane::desktop

#include "session_monitor.moc"
