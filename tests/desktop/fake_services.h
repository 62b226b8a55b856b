// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusUnixFileDescriptor>
#include <QDBusVariant>
#include <QObject>
#include <QStringList>
#include <QVariant>
#include <QVariantMap>
#include <map>
#include <string>
#include <vector>

namespace kelvane::test {

/// How a service of the desktop behaves when it is called.
enum class Manner {
  Answers,
  Refuses,  ///< With an error.
  Waits,    ///< Until the test says so.
};

/// A service on the test's bus. It notes its calls; how it answers is the test's choice.
class FakeService : public QObject, protected QDBusContext {
  Q_OBJECT

 public:
  FakeService(QDBusConnection bus, QString name, QString path);
  ~FakeService() override;

  Manner manner = Manner::Answers;
  std::vector<std::string> calls;

  /// Answers the calls that have been left waiting.
  void answerNow();

 protected:
  /// Notes a call. False where the service answers otherwise than by its reply.
  bool takes(const QString& call, const QVariant& reply = {});
  QDBusConnection& bus() { return bus_; }

 private:
  QDBusConnection bus_;
  QString name_;
  QString path_;
  std::vector<QDBusMessage> waiting_;
};

class FakeFileManager : public FakeService {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.freedesktop.FileManager1")

 public:
  explicit FakeFileManager(const QDBusConnection& bus);

 public Q_SLOTS:
  void ShowFolders(const QStringList& uris, const QString& startupId);
  void ShowItems(const QStringList& uris, const QString& startupId);
};

/// Hands out the writing ends of pipes, as the login manager does. Whoever lets go of all copies of
/// one ends it.
class FakeLoginManager : public FakeService {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.freedesktop.login1.Manager")

 public:
  explicit FakeLoginManager(const QDBusConnection& bus);
  ~FakeLoginManager() override;

  /// How many inhibitions somebody holds now.
  int held();

 public Q_SLOTS:
  QDBusUnixFileDescriptor Inhibit(const QString& what, const QString& who, const QString& why,
                                  const QString& mode);

 private:
  std::vector<int> readingEnds_;
};

class FakePortal;

/// One inhibition that the portal has granted.
class FakePortalRequest : public QObject {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Request")

 public:
  FakePortalRequest(FakePortal& portal, QString path);

 public Q_SLOTS:
  void Close();

 private:
  FakePortal& portal_;
  QString path_;
};

class FakePortal : public FakeService {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Inhibit")

 public:
  explicit FakePortal(const QDBusConnection& bus);

  int held = 0;
  /// Of the monitors that have been asked for, in order.
  std::vector<QString> sessions;
  /// Whether there is a CreateMonitor; older portals have none.
  bool hasMonitors = true;

  /// The session of this monitor has another state now, as the portal numbers them.
  void tell(const QString& session, uint state);

 public Q_SLOTS:
  QDBusObjectPath Inhibit(const QString& window, uint flags, const QVariantMap& options);
  QDBusObjectPath CreateMonitor(const QString& window, const QVariantMap& options);
  void QueryEndResponse(const QDBusObjectPath& session);

 private:
  int granted_ = 0;
};

/// The part of the portal that tells how the desktop is set up. It wraps its answers twice, as it
/// always has.
class FakeSettings : public FakeService {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Settings")

 public:
  explicit FakeSettings(const QDBusConnection& bus);

  /// By group and key, with a slash between them.
  std::map<std::string, QVariant> values;
  void change(const std::string& setting, const QVariant& value);

 public Q_SLOTS:
  QDBusVariant Read(const QString& group, const QString& key);
};

/// A dock that shows the progress of applications.
class FakeLauncher : public QObject {
  Q_OBJECT

 public:
  explicit FakeLauncher(QDBusConnection bus);

  /// What it was told, such as "application://name.desktop 25%", or "… none".
  std::vector<std::string> shown;

 public Q_SLOTS:
  void update(const QString& application, const QVariantMap& properties);
};

class FakeNotifications : public FakeService {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")

 public:
  explicit FakeNotifications(const QDBusConnection& bus);

  struct Shown {
    uint replaces;
    std::string summary;
    std::string body;
    std::string category;
  };
  std::vector<Shown> shown;

  /// The user clicks on the notification of this number; the first one is 1.
  void click(uint id, const QString& action = QStringLiteral("default"));

 public Q_SLOTS:
  uint Notify(const QString& application, uint replaces, const QString& icon,
              const QString& summary, const QString& body, const QStringList& actions,
              const QVariantMap& hints, int milliseconds);
};

}  // namespace kelvane::test
