// SPDX-License-Identifier: GPL-2.0-or-later
#include "desktop/fake_services.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <stdexcept>
#include <utility>

namespace kelvane::test {

FakeService::FakeService(QDBusConnection bus, QString name, QString path)
    : bus_(std::move(bus)), name_(std::move(name)), path_(std::move(path)) {
  const bool known = bus_.registerObject(path_, this, QDBusConnection::ExportAllSlots) &&
                     bus_.registerService(name_);
  if (!known) throw std::runtime_error("the service has no name on the bus");
}

FakeService::~FakeService() {
  bus_.unregisterService(name_);
  bus_.unregisterObject(path_);
}

bool FakeService::takes(const QString& call, const QVariant& reply) {
  calls.push_back(call.toStdString());
  if (manner == Manner::Refuses) {
    sendErrorReply(QDBusError::AccessDenied, QStringLiteral("not today"));
  } else if (manner == Manner::Waits) {
    setDelayedReply(true);
    waiting_.push_back(reply.isValid() ? message().createReply(reply) : message().createReply());
  }
  return manner == Manner::Answers;
}

void FakeService::answerNow() {
  for (const QDBusMessage& answer : std::exchange(waiting_, {})) bus_.send(answer);
}

FakeFileManager::FakeFileManager(const QDBusConnection& bus)
    : FakeService(bus, QStringLiteral("org.freedesktop.FileManager1"),
                  QStringLiteral("/org/freedesktop/FileManager1")) {}

void FakeFileManager::ShowFolders(const QStringList& uris, const QString&) {
  takes(QStringLiteral("ShowFolders ") + uris.join(QLatin1Char(' ')));
}

void FakeFileManager::ShowItems(const QStringList& uris, const QString&) {
  takes(QStringLiteral("ShowItems ") + uris.join(QLatin1Char(' ')));
}

FakeLoginManager::FakeLoginManager(const QDBusConnection& bus)
    : FakeService(bus, QStringLiteral("org.freedesktop.login1"),
                  QStringLiteral("/org/freedesktop/login1")) {}

FakeLoginManager::~FakeLoginManager() {
  for (const int end : readingEnds_) close(end);
}

QDBusUnixFileDescriptor FakeLoginManager::Inhibit(const QString& what, const QString& who,
                                                  const QString& why, const QString& mode) {
  int ends[2] = {-1, -1};
  if (pipe2(ends, O_CLOEXEC) != 0) return {};
  const QDBusUnixFileDescriptor right(ends[1]);  // Takes a copy.
  close(ends[1]);
  const QString call = QStringList{what, who, why, mode}.join(QStringLiteral(" | "));
  if (!takes(call, QVariant::fromValue(right)) && manner == Manner::Refuses) {
    close(ends[0]);
    return {};
  }
  readingEnds_.push_back(ends[0]);
  return right;
}

int FakeLoginManager::held() {
  int count = 0;
  for (const int end : readingEnds_) {
    pollfd waiting{end, POLLIN, 0};
    // An end without a writer is hung up.
    if (poll(&waiting, 1, 0) == 0) ++count;
  }
  return count;
}

FakePortalRequest::FakePortalRequest(FakePortal& portal, QString path)
    : QObject(&portal), portal_(portal), path_(std::move(path)) {}

void FakePortalRequest::Close() {
  portal_.calls.push_back("Close " + path_.toStdString());
  --portal_.held;
}

FakePortal::FakePortal(const QDBusConnection& bus)
    : FakeService(bus, QStringLiteral("org.freedesktop.portal.Desktop"),
                  QStringLiteral("/org/freedesktop/portal/desktop")) {}

QDBusObjectPath FakePortal::Inhibit(const QString&, uint flags, const QVariantMap& options) {
  const QString path = QStringLiteral("/request/%1").arg(++granted_);
  const QDBusObjectPath handle(path);
  const QString why = options.value(QStringLiteral("reason")).toString();
  takes(QStringLiteral("%1 | %2").arg(flags).arg(why), QVariant::fromValue(handle));
  if (manner == Manner::Refuses) return handle;
  ++held;
  bus().registerObject(path, new FakePortalRequest(*this, path), QDBusConnection::ExportAllSlots);
  return handle;
}

QDBusObjectPath FakePortal::CreateMonitor(const QString&, const QVariantMap& options) {
  const QDBusObjectPath handle(QStringLiteral("/request/monitor"));
  if (!hasMonitors) {
    sendErrorReply(QDBusError::UnknownMethod, QStringLiteral("no such method"));
    return handle;
  }
  QString caller = message().service().mid(1);
  caller.replace(QLatin1Char('.'), QLatin1Char('_'));
  takes(QStringLiteral("CreateMonitor"), QVariant::fromValue(handle));
  sessions.push_back(
      QStringLiteral("/org/freedesktop/portal/desktop/session/%1/%2")
          .arg(caller, options.value(QStringLiteral("session_handle_token")).toString()));
  return handle;
}

void FakePortal::QueryEndResponse(const QDBusObjectPath&) {
  calls.emplace_back("QueryEndResponse");
}

void FakePortal::tell(const QString& session, uint state) {
  QDBusMessage signal = QDBusMessage::createSignal(
      QStringLiteral("/org/freedesktop/portal/desktop"),
      QStringLiteral("org.freedesktop.portal.Inhibit"), QStringLiteral("StateChanged"));
  signal << QVariant::fromValue(QDBusObjectPath(session))
         << QVariantMap{{QStringLiteral("screensaver-active"), false},
                        {QStringLiteral("session-state"), state}};
  bus().send(signal);
}

FakeSettings::FakeSettings(const QDBusConnection& bus)
    : FakeService(bus, QStringLiteral("org.freedesktop.portal.Desktop"),
                  QStringLiteral("/org/freedesktop/portal/desktop")) {}

QDBusVariant FakeSettings::Read(const QString& group, const QString& key) {
  const QString setting = group + QLatin1Char('/') + key;
  calls.push_back(setting.toStdString());
  const auto found = values.find(setting.toStdString());
  if (found == values.end()) {
    sendErrorReply(QStringLiteral("org.freedesktop.portal.Error.NotFound"),
                   QStringLiteral("no such setting"));
    return {};
  }
  return QDBusVariant(QVariant::fromValue(QDBusVariant(found->second)));
}

void FakeSettings::change(const std::string& setting, const QVariant& value) {
  const size_t slash = setting.find('/');
  QDBusMessage signal = QDBusMessage::createSignal(
      QStringLiteral("/org/freedesktop/portal/desktop"),
      QStringLiteral("org.freedesktop.portal.Settings"), QStringLiteral("SettingChanged"));
  signal << QString::fromStdString(setting.substr(0, slash))
         << QString::fromStdString(setting.substr(slash + 1))
         << QVariant::fromValue(QDBusVariant(value));
  bus().send(signal);
}

FakeLauncher::FakeLauncher(QDBusConnection bus) {
  bus.connect(QString(), QString(), QStringLiteral("com.canonical.Unity.LauncherEntry"),
              QStringLiteral("Update"), this, SLOT(update(QString, QVariantMap)));
}

void FakeLauncher::update(const QString& application, const QVariantMap& properties) {
  const bool visible = properties.value(QStringLiteral("progress-visible")).toBool();
  const int percent = qRound(100 * properties.value(QStringLiteral("progress")).toDouble());
  shown.push_back(application.toStdString() +
                  (visible ? " " + std::to_string(percent) + "%" : std::string(" none")));
}

FakeNotifications::FakeNotifications(const QDBusConnection& bus)
    : FakeService(bus, QStringLiteral("org.freedesktop.Notifications"),
                  QStringLiteral("/org/freedesktop/Notifications")) {}

uint FakeNotifications::Notify(const QString& application, uint replaces, const QString& icon,
                               const QString& summary, const QString& body, const QStringList&,
                               const QVariantMap& hints, int) {
  shown.push_back({replaces, summary.toStdString(), body.toStdString(),
                   hints.value(QStringLiteral("category")).toString().toStdString()});
  const auto id = static_cast<uint>(shown.size());
  takes(application + QLatin1Char(' ') + icon, id);
  return id;
}

void FakeNotifications::click(uint id, const QString& action) {
  QDBusMessage signal = QDBusMessage::createSignal(QStringLiteral("/org/freedesktop/Notifications"),
                                                   QStringLiteral("org.freedesktop.Notifications"),
                                                   QStringLiteral("ActionInvoked"));
  signal << id << action;
  bus().send(signal);
}

}  // namespace kelvane::test
