// SPDX-License-Identifier: GPL-2.0-or-later
#include "overlayfs/hide_list.h"

#include <utility>

namespace kelvane {

void HideList::append(std::string volumePath) {
  const auto position = paths_.insert(paths_.end(), std::move(volumePath));
  occurrences_.emplace(*position, position);
}

void HideList::remove(std::string_view volumePath) {
  const auto [first, last] = occurrences_.equal_range(volumePath);
  std::list<std::string> removed;  // Keeps the keys' bytes alive until the keys are gone.
  for (auto occurrence = first; occurrence != last; ++occurrence) {
    removed.splice(removed.end(), paths_, occurrence->second);
  }
  occurrences_.erase(first, last);
}

bool HideList::contains(std::string_view volumePath) const {
  return occurrences_.contains(volumePath);
}

}  // namespace kelvane
