// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "desktop/fake_services.h"

namespace kelvane::test {

/// The desktop's disc service, which knows one drive and mounts nothing.
class FakeDiscService : public FakeService {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.freedesktop.UDisks2.Filesystem")

 public:
  FakeDiscService(const QDBusConnection& bus, const QString& drive);

  QString error;  ///< What it refuses with; empty where it does as it is asked.

 public Q_SLOTS:
  QString Mount(const QVariantMap& options);
};

}  // namespace kelvane::test
