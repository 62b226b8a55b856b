// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <map>
#include <optional>
#include <string_view>
#include <vector>

#include "helpers/isovolume/directory_loader.h"
#include "helpers/isovolume/node_table.h"
#include "helpers/isovolume/volume_types.h"

namespace kelvane::isovolume {

/// The directories of a volume, read when they are first asked for and remembered.
///
/// Each directory on the disc belongs to the entry through which it was read first. Another entry
/// that leads to it, as on a disc whose directories form a loop, stays a directory that cannot be
/// listed.
class DirectoryTree {
 public:
  /// A directory that has been read.
  struct Directory {
    NodeId first = 0;            ///< its entries are the nodes from here on …
    NodeId count = 0;            ///< … so many, in the order of the disc; hidden ones among them
    std::vector<NodeId> sorted;  ///< those not hidden, by name
    std::size_t relocated = 0;   ///< entries that are shown elsewhere
  };

  /// The tree below a root directory of `length` bytes at `extent`. `source` is borrowed.
  DirectoryTree(BlockSource& source, Naming naming, std::uint8_t systemUseSkip,
                std::uint64_t extent, std::uint32_t length);

  /// Reads the directory unless it is known. `*result` is valid until the next call.
  Status directory(NodeId id, const Directory** result);

  Status lookup(NodeId directory, std::string_view name, NodeId* child);

  [[nodiscard]] const NodeTable& nodes() const { return nodes_; }
  [[nodiscard]] bool contains(NodeId id) const { return id < nodes_.size(); }

 private:
  /// Sorts the names, and hides what bears a name that an earlier entry has.
  void index(Directory* directory);
  /// The place where relocated directories are kept on the disc is no directory of the user's.
  void hideRelocationDirectory();

  NodeTable nodes_;
  DirectoryLoader loader_;
  std::vector<Directory> directories_;
  std::map<std::uint64_t, NodeId>
      owners_;  ///< of the directories that were read, by their first block
};

}  // namespace kelvane::isovolume
