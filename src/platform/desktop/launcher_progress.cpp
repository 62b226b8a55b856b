// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/desktop/launcher_progress.h"

#include <QVariantMap>
#include <algorithm>

#include "platform/desktop/message_bus.h"

namespace kelvane::desktop {
namespace {

void announce(const QVariantMap& properties) {
  QDBusConnection bus = sessionBus();
  if (!bus.isConnected()) return;
  QDBusMessage update = QDBusMessage::createSignal(
      QStringLiteral("/com/canonical/unity/launcherentry/kelvanefs"),
      QStringLiteral("com.canonical.Unity.LauncherEntry"), QStringLiteral("Update"));
  update << QStringLiteral("application://kelvanefs.desktop") << properties;
  bus.send(update);
}

}  // namespace

LauncherProgress::~LauncherProgress() {
  show(std::nullopt);
}

void LauncherProgress::show(std::optional<double> fraction) {
  std::optional<int> percent;
  if (fraction) percent = static_cast<int>(100 * std::clamp(*fraction, 0.0, 1.0));
  if (percent == shownPercent_) return;
  shownPercent_ = percent;
  announce({{QStringLiteral("progress"), percent.value_or(0) / 100.0},
            {QStringLiteral("progress-visible"), percent.has_value()}});
}

}  // namespace kelvane::desktop
