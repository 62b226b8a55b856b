// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/desktop/disc_service.h"

#include <QDBusError>
#include <QDBusMessage>
#include <QEventLoop>
#include <QVariantMap>

#include "platform/desktop/message_bus.h"

namespace kelvane::desktop {
namespace {

constexpr char kService[] = "org.freedesktop.UDisks2";
constexpr char kFolderOfDrives[] = "/org/freedesktop/UDisks2/block_devices/";
constexpr char kFilesystem[] = "org.freedesktop.UDisks2.Filesystem";
constexpr char kAlreadyMounted[] = "org.freedesktop.UDisks2.Error.AlreadyMounted";

DiscServiceAnswer meaningOf(const QDBusMessage& answer) {
  if (answer.type() == QDBusMessage::ReplyMessage) return DiscServiceAnswer::Done;
  if (isServiceAbsent(answer)) return DiscServiceAnswer::Absent;
  if (answer.errorName() == QLatin1String(kAlreadyMounted))
    return DiscServiceAnswer::AlreadyMounted;
  const QDBusError::ErrorType error = QDBusError(answer).type();
  const bool isLate =
      error == QDBusError::NoReply || error == QDBusError::Timeout || error == QDBusError::TimedOut;
  return isLate ? DiscServiceAnswer::Unanswered : DiscServiceAnswer::Refused;
}

}  // namespace

DiscServiceAnswer mountThroughDiscService(const std::string& drive,
                                          std::chrono::milliseconds patience) {
  const QDBusConnection bus = systemBus();
  if (!bus.isConnected()) return DiscServiceAnswer::Absent;
  QDBusMessage mount = QDBusMessage::createMethodCall(
      QLatin1String(kService), QLatin1String(kFolderOfDrives) + QString::fromStdString(drive),
      QLatin1String(kFilesystem), QStringLiteral("Mount"));
  mount.setArguments({QVariantMap{{QStringLiteral("auth.no_user_interaction"), true}}});
  DiscServiceAnswer meaning = DiscServiceAnswer::Unanswered;
  QEventLoop waiting;
  call(bus, mount, patience, &waiting, [&](const QDBusMessage& answer) {
    meaning = meaningOf(answer);
    waiting.quit();
  });
  waiting.exec();
  return meaning;
}

}  // namespace kelvane::desktop
