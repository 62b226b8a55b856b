// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/desktop/motion_setting.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QObject>
#include <array>
#include <utility>

#include "platform/desktop/message_bus.h"

namespace kelvane::desktop {
namespace {

constexpr char kService[] = "org.freedesktop.portal.Desktop";
constexpr char kObjectPath[] = "/org/freedesktop/portal/desktop";
constexpr char kInterface[] = "org.freedesktop.portal.Settings";

/// A setting in question: where it stands, how it reads where less motion is wanted, and whether it
/// counts where both are known.
struct Setting {
  const char* group;
  const char* key;
  bool valueForLess;
  bool isNewer;
};
constexpr std::array kSettings = {
    Setting{"org.freedesktop.appearance", "reduced-motion", true, true},
    Setting{"org.gnome.desktop.interface", "enable-animations", false, false}};

/// The portal wraps what it is asked for once or twice, depending on its age.
QVariant unwrapped(QVariant value) {
  while (value.metaType() == QMetaType::fromType<QDBusVariant>()) {
    value = value.value<QDBusVariant>().variant();
  }
  return value;
}

}  // namespace

class MotionSetting::Listener : public QObject {
  Q_OBJECT

 public:
  Listener(std::function<void(bool)> heard, std::chrono::milliseconds patience)
      : heard_(std::move(heard)), patience_(patience) {
    if (!bus_.isConnected()) return;
    bus_.connect(QLatin1String(kService), QLatin1String(kObjectPath), QLatin1String(kInterface),
                 QStringLiteral("SettingChanged"), this, SLOT(settingChanged(QDBusMessage)));
    for (const Setting& setting : kSettings) ask(setting);
  }

 private Q_SLOTS:
  // Group, key and value.
  void settingChanged(const QDBusMessage& signal) {
    const QVariantList arguments = signal.arguments();
    if (arguments.size() < 3) return;
    for (const Setting& setting : kSettings) {
      if (arguments[0].toString() == QLatin1String(setting.group) &&
          arguments[1].toString() == QLatin1String(setting.key)) {
        take(setting, arguments[2]);
      }
    }
  }

 private:
  // A portal that does not know the setting refuses, which tells nothing.
  void ask(const Setting& setting) {
    QDBusMessage method =
        QDBusMessage::createMethodCall(QLatin1String(kService), QLatin1String(kObjectPath),
                                       QLatin1String(kInterface), QStringLiteral("Read"));
    method << QString::fromLatin1(setting.group) << QString::fromLatin1(setting.key);
    call(bus_, method, patience_, this, [this, setting](const QDBusMessage& answer) {
      if (answer.type() != QDBusMessage::ReplyMessage || answer.arguments().isEmpty()) return;
      take(setting, answer.arguments().constFirst());
    });
  }

  void take(const Setting& setting, const QVariant& value) {
    if (knowsNewer_ && !setting.isNewer) return;
    knowsNewer_ = setting.isNewer;
    heard_(unwrapped(value).toBool() == setting.valueForLess);
  }

  std::function<void(bool)> heard_;
  const std::chrono::milliseconds patience_;
  QDBusConnection bus_ = sessionBus();
  bool knowsNewer_ = false;
};

MotionSetting::MotionSetting(std::function<void(bool lessMotion)> heard,
                             std::chrono::milliseconds patience)
    : listener_(std::make_unique<Listener>(std::move(heard), patience)) {}

MotionSetting::~MotionSetting() = default;

}  // namespace kelvane::desktop

#include "motion_setting.moc"
