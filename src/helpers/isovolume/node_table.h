// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "helpers/isovolume/volume_types.h"

namespace kelvane::isovolume {

/// A run of a file's bytes on the disc.
struct Section {
  std::uint64_t firstBlock = 0;
  std::uint64_t length = 0;  ///< bytes
};

/// What is remembered of one directory entry. A disc may have hundreds of thousands: keep it small.
struct Node {
  const char* name = nullptr;  ///< in the table's text store, as is the target below
  std::uint64_t size = 0;      ///< bytes; of a symbolic link the length of its target
  std::int64_t modified = 0;   ///< seconds since 1970
  std::int64_t accessed = 0;
  std::int64_t changed = 0;
  union {
    std::uint64_t firstBlock = 0;  ///< of a file in one section, and of a directory
    std::uint64_t sections;        ///< of a file in several sections: their index in the table
    const char* target;            ///< of a symbolic link
  };
  NodeId parent = kRootNode;
  std::uint32_t user = 0;
  std::uint32_t group = 0;
  std::uint32_t links = 1;
  std::uint32_t device = 0;     ///< of a device node
  std::uint32_t directory = 0;  ///< of a directory that has been read: 1 + its index; else 0
  std::uint16_t mode = 0;       ///< type and permissions as in st_mode
  std::uint16_t depth = 0;      ///< 0 of the root
  std::uint8_t nameLength = 0;
  bool severalSections = false;
  bool unreadable =
      false;            ///< its content is stored in a way that is not understood, or is damaged
  bool hidden = false;  ///< not part of what the volume shows
};

/// The nodes, their names and the like, in chunks that never move.
class NodeTable {
 public:
  /// When a table is full. Twice as many entries as a DVD of two layers has blocks, and what stays
  /// far below the two gigabytes that the serving process may use (see isomount's sandbox).
  struct Limits {
    NodeId entries = 8'000'000;  ///< nodes and further sections of files
    std::size_t textBytes = std::size_t{512} << 20;
  };

  NodeTable() = default;
  explicit NodeTable(Limits limits) : limits_(limits) {}

  /// Whether the limits are reached. Nothing is refused then; whoever reads directories stops
  /// before the next sector, so that a disc made to fill the memory does not.
  [[nodiscard]] bool isFull() const {
    return size_ + furtherSections_ >= limits_.entries ||
           texts_.size() * kTextChunk >= limits_.textBytes;
  }

  NodeId append(const Node& node);
  [[nodiscard]] NodeId size() const { return size_; }

  Node& operator[](NodeId id) { return chunks_[id / kNodesPerChunk][id % kNodesPerChunk]; }
  const Node& operator[](NodeId id) const {
    return chunks_[id / kNodesPerChunk][id % kNodesPerChunk];
  }

  [[nodiscard]] std::string_view name(NodeId id) const {
    const Node& node = (*this)[id];
    return {node.name, node.nameLength};
  }

  /// Copies `text` into the store. At most kLargestText bytes.
  const char* storeText(std::string_view text);

  /// Adds a section to a file, which need not have had several so far.
  void addSection(Node* file, const Section& section);
  [[nodiscard]] const std::vector<Section>& sectionsOf(const Node& file) const {
    return sections_[file.sections];
  }

  static constexpr std::size_t kLargestText = 4096;

 private:
  static constexpr NodeId kNodesPerChunk = 1024;
  static constexpr std::size_t kTextChunk = 16 * kLargestText;

  Limits limits_;
  std::vector<std::unique_ptr<Node[]>> chunks_;
  NodeId size_ = 0;
  NodeId furtherSections_ = 0;
  std::vector<std::unique_ptr<char[]>> texts_;
  std::size_t textUsed_ = 0;  ///< of the last chunk
  std::vector<std::vector<Section>> sections_;
};

}  // namespace kelvane::isovolume
