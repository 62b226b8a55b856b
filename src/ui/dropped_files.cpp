// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/dropped_files.h"

#include <QByteArray>
#include <QMimeData>
#include <QUrl>

namespace kelvane {

std::optional<std::vector<std::string>> localFilesIn(const QMimeData* data) {
  if (data == nullptr || !data->hasUrls()) return std::nullopt;
  std::vector<std::string> paths;
  for (const QUrl& url : data->urls()) {
    if (!url.isLocalFile()) return std::nullopt;
    // A name need not be valid text, and would not survive being made into it.
    const QByteArray path = url.path(QUrl::FullyEncoded).toUtf8();
    paths.push_back(QByteArray::fromPercentEncoding(path).toStdString());
  }
  if (paths.empty()) return std::nullopt;
  return paths;
}

}  // namespace kelvane
