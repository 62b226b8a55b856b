// SPDX-License-Identifier: GPL-2.0-or-later
#include "helpers/isovolume/node_table.h"

#include <algorithm>

namespace kelvane::isovolume {

NodeId NodeTable::append(const Node& node) {
  if (size_ % kNodesPerChunk == 0) chunks_.push_back(std::make_unique<Node[]>(kNodesPerChunk));
  const NodeId id = size_++;
  (*this)[id] = node;
  return id;
}

const char* NodeTable::storeText(std::string_view text) {
  if (texts_.empty() || textUsed_ + text.size() > kTextChunk) {
    texts_.push_back(std::make_unique<char[]>(kTextChunk));
    textUsed_ = 0;
  }
  char* place = texts_.back().get() + textUsed_;
  std::copy(text.begin(), text.end(), place);
  textUsed_ += text.size();
  return place;
}

void NodeTable::addSection(Node* file, const Section& section) {
  if (!file->severalSections) {
    const Section first{.firstBlock = file->firstBlock, .length = file->size};
    file->severalSections = true;
    file->sections = sections_.size();
    sections_.push_back({first});
  }
  sections_[file->sections].push_back(section);
  ++furtherSections_;
  file->size += section.length;
}

}  // namespace kelvane::isovolume
