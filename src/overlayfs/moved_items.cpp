// SPDX-License-Identifier: GPL-2.0-or-later
#include "overlayfs/moved_items.h"

#include <utility>
#include <vector>

namespace kelvane {

void MovedItems::noteCopyUp(const std::string& source, const std::string& destination) {
  noteRemoval(destination);
  origins_[destination] = source;
}

void MovedItems::noteRename(const std::string& from, const std::string& to) {
  if (origins_.empty() || from == to) return;
  const std::optional<std::string> origin = originOf(from);
  const std::string below = from + "/";
  std::vector<std::pair<std::string, std::string>> inside;
  for (auto item = origins_.lower_bound(below);
       item != origins_.end() && item->first.starts_with(below); ++item) {
    inside.emplace_back(to + "/" + item->first.substr(below.size()), item->second);
  }
  noteRemoval(from);
  noteRemoval(to);
  if (origin) origins_[to] = *origin;
  origins_.insert(inside.begin(), inside.end());
}

void MovedItems::noteChange(const std::string& path) {
  if (originOf(path)) origins_[path].clear();
}

void MovedItems::noteRemoval(const std::string& path) {
  if (origins_.empty()) return;
  origins_.erase(path);
  const std::string below = path + "/";
  auto item = origins_.lower_bound(below);
  while (item != origins_.end() && item->first.starts_with(below)) item = origins_.erase(item);
  // A later item at this path has nothing to do with what was moved with a directory around it.
  noteChange(path);
}

std::optional<std::string> MovedItems::originOf(const std::string& path) const {
  if (origins_.empty()) return std::nullopt;
  for (size_t end = path.size(); end != 0 && end != std::string::npos;
       end = path.rfind('/', end - 1)) {
    const auto found = origins_.find(path.substr(0, end));
    if (found == origins_.end()) continue;
    if (found->second.empty()) return std::nullopt;
    return found->second + path.substr(end);
  }
  return std::nullopt;
}

}  // namespace kelvane
