// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/userfs/node_table.h"

#include <functional>
#include <vector>

namespace kelvane::userfs {
namespace {

constexpr uint64_t kRootNumber = 1;  // FUSE_ROOT_ID

}  // namespace

size_t NodeTable::Hash::operator()(const Key& key) const {
  const size_t parent = std::hash<const Node*>()(key.parent);
  return std::hash<std::string_view>()(key.name) ^ (parent * size_t{0x9e3779b97f4a7c15});
}

NodeTable::NodeTable() {
  root_.lookupCount = 1;
  root_.type = S_IFDIR;
}

NodeTable::~NodeTable() {
  for (Node* node : named_) delete node;
  for (Node* node : nameless_) delete node;
}

uint64_t NodeTable::numberOf(const Node* node) const {
  return node == &root_ ? kRootNumber : reinterpret_cast<uintptr_t>(node);
}

Node* NodeTable::nodeOf(uint64_t number) {
  return number == kRootNumber ? &root_ : reinterpret_cast<Node*>(number);
}

Node* NodeTable::find(const Node* parent, std::string_view name) const {
  const auto found = named_.find(Key{parent, name});
  return found == named_.end() ? nullptr : *found;
}

Node* NodeTable::make(Node* parent, std::string_view name) {
  auto* node = new Node;
  node->parent = parent;
  node->name = name;
  ++parent->childCount;
  named_.insert(node);
  return node;
}

void NodeTable::forget(Node* node, uint64_t count) {
  node->lookupCount -= std::min(count, node->lookupCount);
  dropIfUnused(node);
}

bool NodeTable::isUnused(const Node* node) {
  return node->lookupCount == 0 && node->childCount == 0 && node->openFiles == nullptr;
}

void NodeTable::dropIfUnused(Node* node) {
  while (node != nullptr && node != &root_ && isUnused(node)) {
    Node* const above = node->parent;
    if (above == nullptr) {
      nameless_.erase(node);
    } else {
      named_.erase(node);
      --above->childCount;
    }
    delete node;
    node = above;
  }
}

void NodeTable::detach(Node* node) {
  Node* const above = node->parent;
  if (above == nullptr) return;
  named_.erase(node);
  nameless_.insert(node);
  node->parent = nullptr;
  --above->childCount;
  dropIfUnused(node);
  dropIfUnused(above);
}

void NodeTable::move(Node* node, Node* newParent, std::string_view newName) {
  if (node->parent == nullptr) return;
  ++newParent->childCount;  // Keeps it while the replaced node goes.
  Node* const replaced = find(newParent, newName);
  if (replaced != nullptr && replaced != node) detach(replaced);
  Node* const above = node->parent;
  named_.erase(node);
  node->parent = newParent;
  node->name = newName;
  named_.insert(node);
  --above->childCount;
  dropIfUnused(above);
}

bool NodeTable::isLinked(const Node* node) const {
  while (node->parent != nullptr) node = node->parent;
  return node == &root_;
}

std::string NodeTable::pathOf(const Node* node) const {
  if (node == &root_) return "/";
  std::vector<const Node*> chain;
  size_t length = 0;
  for (const Node* step = node; step != nullptr && step != &root_; step = step->parent) {
    chain.push_back(step);
    length += step->name.size() + 1;
  }
  std::string path;
  path.reserve(length);
  for (size_t index = chain.size(); index-- > 0;) path.append(1, '/').append(chain[index]->name);
  return path;
}

std::string NodeTable::pathOf(const Node* parent, std::string_view name) const {
  std::string path = pathOf(parent);
  if (!path.ends_with('/')) path += '/';
  return path.append(name);
}

}  // namespace kelvane::userfs
