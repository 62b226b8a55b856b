// SPDX-License-Identifier: GPL-2.0-or-later
#include "burn/unencodable_name.h"

#include <QStringDecoder>
#include <algorithm>

#include "platform/foundation/folder_items.h"

namespace kelvane {
namespace {

bool isText(const std::string& name) {
  QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
  const QString text = decoder.decode(QByteArrayView(name.data(), std::ssize(name)));
  return !decoder.hasError();
}

}  // namespace

std::optional<std::string> unencodableName(const std::string& overlay,
                                           std::span<const std::string> deleted,
                                           const std::stop_token& stop) {
  std::optional<std::string> found;
  const bool isThrough = visitItemsBelow(overlay, stop, [&](const FolderItem& item) {
    if (isText(item.name) || std::ranges::find(deleted, item.path) != deleted.end()) {
      return Visit::GoOn;
    }
    found = item.path;
    return Visit::End;
  });
  return isThrough ? found : std::nullopt;
}

}  // namespace kelvane
