// SPDX-License-Identifier: GPL-2.0-or-later
// What has to be put right after an item was moved.
#include "platform/userfs/volume.h"

namespace kelvane::userfs {

// The paths of all items below a directory, relative to it.
std::unordered_set<std::string> Volume::itemsBelow(const std::string& directory) {
  std::unordered_set<std::string> found;
  std::vector<std::string> pending = {""};
  while (!pending.empty()) {
    const std::string below = std::move(pending.back());
    pending.pop_back();
    for (const std::string& name :
         delegate_->contentsOfDirectoryAtPath(directory + below, nullptr)) {
      std::string path = below + "/" + name;
      const auto item = itemAt(directory + path);
      if (!item.has_value()) continue;
      if (item->isDirectory()) pending.push_back(path);
      found.insert(std::move(path));
    }
  }
  return found;
}

// Two things can be wrong below a moved directory. A path there may still be hidden, because an
// item of that path was removed once: the moved item would be neither seen nor burned; to make a
// directory at its path shows it without changing it. And a copy from beneath holds what was hidden
// at the old place: it is removed again. `visibleBefore` says what was to be seen there; null where
// nothing was copied.
void Volume::settleMovedTree(const std::string& directory, const std::string& below,
                             const std::unordered_set<std::string>* visibleBefore) {
  for (const std::string& name : delegate_->contentsOfDirectoryAtPath(directory + below, nullptr)) {
    const std::string relative = below + "/" + name;
    const std::string path = directory + relative;
    auto item = itemAt(path);
    if (!item.has_value()) {
      delegate_->createDirectoryAtPath(path, {}, nullptr);
      item = itemAt(path);
      if (!item.has_value()) continue;
    }
    const bool isUnwanted =
        visibleBefore != nullptr && !item->isReadOnly() && !visibleBefore->contains(relative);
    if (isUnwanted) {
      removeAt(path);
    } else if (item->isDirectory()) {
      settleMovedTree(directory, relative, visibleBefore);
    }
  }
}

// Of the merged directories below one that was moved, what stands beneath stayed behind.
void Volume::forgetListingsBelow(const Node* directory) {
  if (!nodes_.isLinked(directory)) return;
  for (const std::string& name :
       delegate_->contentsOfDirectoryAtPath(nodes_.pathOf(directory), nullptr)) {
    const Node* const node = nodes_.find(directory, name);
    if (node == nullptr || !S_ISDIR(node->type)) continue;
    caches_.forgetListing(nodes_.numberOf(node));
    forgetListingsBelow(node);
  }
}

// Brings the nodes, and what the kernel remembers, to the new state.
void Volume::settleNodes(const Move& move) {
  parentsBecameWritable(move.newParent);
  Node* const node = nodes_.find(move.parent, move.name);
  if (node == nullptr) return;
  nodes_.retain(node);
  const bool wasRemoved = move.to.starts_with(kTrash) && !itemAt(move.to).has_value();
  if (!wasRemoved) {
    nodes_.move(node, move.newParent, move.newName);
    // What stands beneath becomes visible again at the old path and has this number.
    const bool hasNumberFromBeneath = (node->inodeNumber & 1U) != 0 && !move.source.isReadOnly();
    if (hasNumberFromBeneath) node->inodeNumber = 0;
    const bool looksDifferent = hasNumberFromBeneath || move.source.isReadOnly();
    if (looksDifferent) caches_.forgetAttributes(nodes_.numberOf(node));
  } else {
    // The delegate has taken the move for a removal.
    nodes_.detach(node);
  }
  if (move.source.isDirectory()) caches_.forgetListing(nodes_.numberOf(node));
  if (move.source.isDirectory() && !move.source.isReadOnly()) forgetListingsBelow(node);
  if (move.source.isDirectory() || wasRemoved) {
    caches_.forgetNamesBelow(nodes_.numberOf(move.newParent), move.newName);
  }
  nodes_.forget(node, 1);
}

}  // namespace kelvane::userfs
