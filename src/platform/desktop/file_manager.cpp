// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/desktop/file_manager.h"

#include <QFileInfo>
#include <QUrl>
#include <utility>

#include "platform/desktop/message_bus.h"

namespace kelvane::desktop {

void showInFileManager(const std::string& path, QObject* context, std::function<void()> otherwise,
                       std::chrono::milliseconds patience) {
  const QString item = QString::fromStdString(path);
  const bool isFolder = QFileInfo(item).isDir();
  QDBusMessage method = QDBusMessage::createMethodCall(
      QStringLiteral("org.freedesktop.FileManager1"),
      QStringLiteral("/org/freedesktop/FileManager1"),
      QStringLiteral("org.freedesktop.FileManager1"),
      isFolder ? QStringLiteral("ShowFolders") : QStringLiteral("ShowItems"));
  const QString noStartupId;
  method << QStringList(QUrl::fromLocalFile(item).toString(QUrl::FullyEncoded)) << noStartupId;
  call(sessionBus(), method, patience, context,
       [otherwise = std::move(otherwise)](const QDBusMessage& answer) {
         if (answer.type() == QDBusMessage::ErrorMessage && otherwise) otherwise();
       });
}

}  // namespace kelvane::desktop
