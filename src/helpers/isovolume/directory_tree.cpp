// SPDX-License-Identifier: GPL-2.0-or-later
#include "helpers/isovolume/directory_tree.h"

#include <sys/stat.h>

#include <algorithm>
#include <numeric>

namespace kelvane::isovolume {

DirectoryTree::DirectoryTree(BlockSource& source, Naming naming, std::uint8_t systemUseSkip,
                             std::uint64_t extent, std::uint32_t length)
    : loader_(source, nodes_) {
  loader_.setNaming(naming);
  nodes_.append(loader_.rootNode(extent, length));
  loader_.setSkip(systemUseSkip);
  if (naming == Naming::rockRidge) hideRelocationDirectory();
}

Status DirectoryTree::directory(NodeId id, const Directory** result) {
  if (!contains(id)) return Status::notFound;
  const Node& node = nodes_[id];
  if (!S_ISDIR(node.mode)) return Status::notADirectory;
  if (node.directory == 0) {
    const auto [owner, isNew] = owners_.try_emplace(node.firstBlock, id);
    if (!isNew) return Status::loop;
    const DirectoryLoader::Result loaded = loader_.load(id);
    if (!loaded.anyRead) {
      // Nothing is remembered, so that a drive which was only not ready is asked again.
      owners_.erase(owner);
      return Status::damaged;
    }
    Directory& directory = directories_.emplace_back();
    directory.first = loaded.first;
    directory.count = loaded.count;
    directory.relocated = loaded.relocated;
    index(&directory);
    nodes_[id].directory = static_cast<std::uint32_t>(directories_.size());
  }
  *result = &directories_[nodes_[id].directory - 1];
  return Status::ok;
}

Status DirectoryTree::lookup(NodeId directoryId, std::string_view name, NodeId* child) {
  const Directory* found = nullptr;
  const Status status = directory(directoryId, &found);
  if (status != Status::ok) return status;
  const auto place = std::ranges::lower_bound(found->sorted, name, {},
                                              [this](NodeId id) { return nodes_.name(id); });
  if (place == found->sorted.end() || nodes_.name(*place) != name || nodes_[*place].hidden) {
    return Status::notFound;
  }
  *child = *place;
  return Status::ok;
}

void DirectoryTree::index(Directory* directory) {
  std::vector<NodeId>& sorted = directory->sorted;
  sorted.resize(directory->count);
  std::iota(sorted.begin(), sorted.end(), directory->first);
  std::ranges::sort(sorted, [this](NodeId left, NodeId right) {
    const int order = nodes_.name(left).compare(nodes_.name(right));
    return order != 0 ? order < 0 : left < right;
  });
  const auto sameName = [this](NodeId left, NodeId right) {
    if (nodes_.name(left) != nodes_.name(right)) return false;
    nodes_[right].hidden = true;
    return true;
  };
  sorted.erase(std::unique(sorted.begin(), sorted.end(), sameName), sorted.end());
}

void DirectoryTree::hideRelocationDirectory() {
  for (const std::string_view name : {"rr_moved", ".rr_moved"}) {
    NodeId id = 0;
    if (lookup(kRootNode, name, &id) != Status::ok) continue;
    const Directory* content = nullptr;
    if (directory(id, &content) != Status::ok) continue;
    if (content->relocated > 0 && content->count == 0) nodes_[id].hidden = true;
  }
}

}  // namespace kelvane::isovolume
