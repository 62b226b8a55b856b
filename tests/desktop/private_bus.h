// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QDBusConnection>
#include <QProcess>
#include <QTemporaryDir>
#include <memory>
#include <string>

namespace kelvane::test {

/// A message bus of the test's own, which stands for that of the session and for that of the
/// machine while it lives.
class PrivateBus {
 public:
  PrivateBus();
  ~PrivateBus();
  PrivateBus(const PrivateBus&) = delete;
  PrivateBus& operator=(const PrivateBus&) = delete;

  /// The connection of the services, other than that of the program under test.
  QDBusConnection services() const { return services_; }
  std::string address() const { return address_.toStdString(); }

  /// Ends the daemon, as a desktop does that breaks down.
  void stop();

 private:
  QTemporaryDir folder_;
  QProcess daemon_;
  QString address_;
  QDBusConnection services_;
};

}  // namespace kelvane::test
