// SPDX-License-Identifier: GPL-2.0-or-later
#include "desktop/fake_disc_service.h"

namespace kelvane::test {

FakeDiscService::FakeDiscService(const QDBusConnection& bus, const QString& drive)
    : FakeService(bus, QStringLiteral("org.freedesktop.UDisks2"),
                  QStringLiteral("/org/freedesktop/UDisks2/block_devices/") + drive) {}

QString FakeDiscService::Mount(const QVariantMap& options) {
  const QString mountPoint = QStringLiteral("/run/media/user/DISC");
  const bool quietly = options.value(QStringLiteral("auth.no_user_interaction")).toBool();
  const QString call = quietly ? QStringLiteral("Mount quietly") : QStringLiteral("Mount");
  if (takes(call, mountPoint) && !error.isEmpty()) sendErrorReply(error, QStringLiteral("no"));
  return mountPoint;
}

}  // namespace kelvane::test
