// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_set>

#include "platform/userfs/gm_user_file_system_delegate.h"

namespace kelvane::userfs {

struct OpenFile;

/// One item that the kernel knows, or that lies above one.
///
/// A node holds its name, not a descriptor, so that a hundred thousand known files cost memory
/// alone. It lives as long as the kernel remembers it, an item below it is known, or it is open.
struct Node {
  Node* parent = nullptr;    ///< Null for the root, and once the name is gone.
  std::string name;          ///< Empty for the root; the last name once it is gone.
  uint64_t lookupCount = 0;  ///< How often the kernel has been told of it and not yet forgotten it.
  uint64_t inodeNumber = 0;  ///< What programs see as st_ino; 0 until it is determined.
  OpenFile* openFiles = nullptr;  ///< Its open files, linked through OpenFile::next.
  uint32_t childCount = 0;        ///< Nodes that have this one as parent.
  mode_t type = 0;                ///< The S_IFMT bits of the item.
  ItemOrigin shownOrigin = ItemOrigin::Writable;  ///< Whose attributes the kernel was given last.
};

/// The nodes of a volume, by parent and name, and by the number that the kernel uses.
class NodeTable {
 public:
  NodeTable();
  ~NodeTable();
  NodeTable(const NodeTable&) = delete;
  NodeTable& operator=(const NodeTable&) = delete;

  Node* root() { return &root_; }

  /// The kernel's number of a node: its address, and 1 for the root.
  uint64_t numberOf(const Node* node) const;
  Node* nodeOf(uint64_t number);

  /// Null where there is none.
  Node* find(const Node* parent, std::string_view name) const;
  /// A new node, where there is none of that name. It is kept only from the next `retain` or open
  /// file on; see `dropIfUnused`.
  Node* make(Node* parent, std::string_view name);

  void retain(Node* node) { ++node->lookupCount; }
  /// The kernel forgets the node `count` times. The node may be gone afterwards.
  void forget(Node* node, uint64_t count);
  /// Deletes a node that nobody needs any more, and what only it kept above it.
  void dropIfUnused(Node* node);

  /// Takes a node's name away: its item was removed or replaced. It may be gone afterwards.
  void detach(Node* node);
  /// Gives a node another place, with all below it. A node that has that name already is detached.
  void move(Node* node, Node* newParent, std::string_view newName);

  /// Whether the node still has a place in the volume, with all directories above it.
  bool isLinked(const Node* node) const;
  /// The path on the volume; of a node without a place, its last name.
  std::string pathOf(const Node* node) const;
  /// The path of `name` in a directory.
  std::string pathOf(const Node* parent, std::string_view name) const;

 private:
  struct Key {
    const Node* parent;
    std::string_view name;
  };
  struct Hash {
    using is_transparent = void;
    size_t operator()(const Key& key) const;
    size_t operator()(const Node* node) const { return (*this)(Key{node->parent, node->name}); }
  };
  struct Equal {
    using is_transparent = void;
    static Key keyOf(const Node* node) { return {node->parent, node->name}; }
    static Key keyOf(const Key& key) { return key; }
    template <typename A, typename B>
    bool operator()(const A& a, const B& b) const {
      return keyOf(a).parent == keyOf(b).parent && keyOf(a).name == keyOf(b).name;
    }
  };

  static bool isUnused(const Node* node);

  Node root_;
  std::unordered_set<Node*, Hash, Equal> named_;  // All nodes that have a place, but the root.
  std::unordered_set<Node*> nameless_;            // Those without one.
};

}  // namespace kelvane::userfs
