// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QObject>
#include <QVariantMap>
#include <functional>

namespace kelvane::desktop {

/// What other processes see of the running application (org.freedesktop.Application).
class ApplicationObject : public QObject {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

 public:
  explicit ApplicationObject(std::function<void()> activated);

 public Q_SLOTS:
  /// The user asks for the application.
  void Activate(const QVariantMap& platformData);

 private:
  std::function<void()> activated_;
};

}  // namespace kelvane::desktop
