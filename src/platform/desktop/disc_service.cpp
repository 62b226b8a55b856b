// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/desktop/disc_service.h"

#include <QDBusConnection>
#include <QDBusError>
#include <QDBusMessage>
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
  QDBusMessage call = QDBusMessage::createMethodCall(
      QLatin1String(kService), QLatin1String(kFolderOfDrives) + QString::fromStdString(drive),
      QLatin1String(kFilesystem), QStringLiteral("Mount"));
  call.setArguments({QVariantMap{{QStringLiteral("auth.no_user_interaction"), true}}});
  return meaningOf(bus.call(call, QDBus::Block, static_cast<int>(patience.count())));
}

}  // namespace kelvane::desktop
