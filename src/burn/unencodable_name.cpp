// SPDX-License-Identifier: GPL-2.0-or-later
#include "burn/unencodable_name.h"

#include <QStringDecoder>
#include <algorithm>
#include <filesystem>
#include <system_error>
#include <vector>

namespace kelvane {
namespace {

namespace fs = std::filesystem;

bool isText(const std::string& name) {
  QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
  const QString text = decoder.decode(QByteArrayView(name.data(), std::ssize(name)));
  return !decoder.hasError();
}

}  // namespace

std::optional<std::string> unencodableName(const std::string& overlay,
                                           std::span<const std::string> deleted,
                                           const std::stop_token& stop) {
  std::vector<std::string> folders = {""};
  while (!folders.empty()) {
    const std::string folder = std::move(folders.back());
    folders.pop_back();
    std::error_code failure;
    for (fs::directory_iterator entry(overlay + folder, failure), end; !failure && entry != end;
         entry.increment(failure)) {
      if (stop.stop_requested()) return std::nullopt;
      const std::string name = entry->path().filename().string();
      const std::string path = folder + "/" + name;
      if (!isText(name) && std::ranges::find(deleted, path) == deleted.end()) return path;
      std::error_code unreadable;
      if (fs::is_directory(entry->symlink_status(unreadable))) folders.push_back(path);
    }
  }
  return std::nullopt;
}

}  // namespace kelvane
