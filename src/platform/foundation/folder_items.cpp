// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/foundation/folder_items.h"

#include <filesystem>
#include <system_error>
#include <utility>
#include <vector>

namespace kelvane {

namespace fs = std::filesystem;

// The folders to come are a list of our own, since a volume may be deeper than the stack of a
// thread.
bool visitItemsBelow(const std::string& root, const std::stop_token& stop,
                     const std::function<Visit(const FolderItem& item)>& visit) {
  std::vector<std::string> folders = {""};
  while (!folders.empty()) {
    const std::string folder = std::move(folders.back());
    folders.pop_back();
    std::error_code failure;
    for (fs::directory_iterator entry(root + folder, failure), end; !failure && entry != end;
         entry.increment(failure)) {
      if (stop.stop_requested()) return false;
      std::error_code unreadable;
      FolderItem item;
      item.name = entry->path().filename().string();
      item.path.append(folder).append("/").append(item.name);
      item.isFolder = !entry->is_symlink(unreadable) && entry->is_directory(unreadable);
      const Visit next = visit(item);
      if (next == Visit::End) return true;
      if (next == Visit::GoOn && item.isFolder) folders.push_back(item.path);
    }
  }
  return true;
}

}  // namespace kelvane
