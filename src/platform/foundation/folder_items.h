// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <functional>
#include <stop_token>
#include <string>

namespace kelvane {

/// An item somewhere below a folder.
struct FolderItem {
  std::string path;  ///< From that folder, with a slash before it.
  std::string name;
  bool isFolder = false;  ///< A link to one is none.
};

/// What follows the visit of an item.
enum class Visit {
  GoOn,
  PassOver,  ///< Of a folder: nothing that is in it is visited.
  End,       ///< Nothing else is.
};

/// Visits everything below `root`, each folder before what is in it, in no order beyond that. What
/// cannot be read is passed over. False where `stop` was requested meanwhile. Any thread.
bool visitItemsBelow(const std::string& root, const std::stop_token& stop,
                     const std::function<Visit(const FolderItem& item)>& visit);

}  // namespace kelvane
