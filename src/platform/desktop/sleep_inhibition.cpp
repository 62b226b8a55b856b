// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/desktop/sleep_inhibition.h"

#include <QDBusUnixFileDescriptor>

#include <memory>

#include "platform/desktop/message_bus.h"
#include "platform/foundation/inherited_descriptor.h"
#include "platform/foundation/system_log.h"

namespace kelvane::desktop {

/// The context of the call: an answer that comes after it is dropped, and the descriptor in it
/// closed.
struct SleepInhibition::Right : QObject {
  QDBusUnixFileDescriptor descriptor;
  std::unique_ptr<InheritedDescriptor> inherited;
};

SleepInhibition::SleepInhibition(const std::string& why, std::chrono::milliseconds patience)
    : right_(std::make_unique<Right>()) {
  QDBusMessage method = QDBusMessage::createMethodCall(
      QStringLiteral("org.freedesktop.login1"), QStringLiteral("/org/freedesktop/login1"),
      QStringLiteral("org.freedesktop.login1.Manager"), QStringLiteral("Inhibit"));
  method << QStringLiteral("sleep:shutdown:idle") << QStringLiteral("KelvaneFS")
         << QString::fromStdString(why) << QStringLiteral("block");
  call(systemBus(), method, patience, right_.get(),
       [right = right_.get()](const QDBusMessage& answer) {
         if (answer.type() == QDBusMessage::ReplyMessage && !answer.arguments().isEmpty()) {
           right->descriptor = answer.arguments().constFirst().value<QDBusUnixFileDescriptor>();
         }
         if (right->descriptor.isValid()) {
           right->inherited =
               std::make_unique<InheritedDescriptor>(right->descriptor.fileDescriptor());
           return;
         }
         systemLog("Sleep and shutdown are not held off: %@", answer.errorMessage().toStdString());
       });
}

SleepInhibition::~SleepInhibition() = default;

bool SleepInhibition::isHeld() const {
  return right_->descriptor.isValid();
}

}  // namespace kelvane::desktop
