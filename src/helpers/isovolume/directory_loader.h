// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "helpers/isovolume/directory_record.h"
#include "helpers/isovolume/node_table.h"
#include "helpers/isovolume/rock_ridge.h"
#include "helpers/isovolume/volume_types.h"

namespace kelvane::isovolume {

/// Reads directories from the disc into the node table.
///
/// A directory is a run of sectors with records, none of which crosses a sector's end
/// (ECMA-119, 6.8.1). A record that is no record ends its sector, an unreadable sector is passed
/// over, and a long run of sectors with nothing in them, or the beginning of another directory,
/// ends the directory, whatever length it claims. All directories together may take as many sectors
/// as the source has, so a hostile disc costs no more than an honest full one; where the node table
/// is full, directories end as well.
class DirectoryLoader {
 public:
  /// What became of a directory.
  struct Result {
    bool anyRead = false;       ///< at least one of its sectors could be read
    NodeId first = 0;           ///< its entries are the nodes from here on …
    NodeId count = 0;           ///< … so many, in the order of the disc
    std::size_t relocated = 0;  ///< entries passed over because they are shown elsewhere
  };

  /// Both are borrowed.
  DirectoryLoader(BlockSource& source, NodeTable& nodes);

  void setNaming(Naming naming) { naming_ = naming; }
  /// See RockRidgeReader::setSkip.
  void setSkip(std::uint8_t bytes) { rockRidgeReader_.setSkip(bytes); }

  /// Whether the "." record of the directory at `extent` declares Rock Ridge, and how many bytes
  /// each system use area begins with that are not its own. Nothing where it does not.
  std::optional<std::uint8_t> detectRockRidge(std::uint64_t extent);

  /// A node for the root directory, without name.
  Node rootNode(std::uint64_t extent, std::uint32_t length);

  /// Appends the entries of `directory` to the table.
  Result load(NodeId directory);

 private:
  /// What is carried from one record to the next.
  struct State {
    NodeId directory = 0;
    unsigned childDepth = 0;
    Result result;
    std::optional<NodeId> continuedFile;  ///< whose next section the next record may hold
    std::vector<std::uint8_t> continuedIdentifier;
  };

  /// The number of records found. `*another` is set when another directory begins in the sector.
  std::size_t loadSector(Bytes sector, bool first, State* state, bool* another);
  void loadRecord(const DirectoryRecord& record, State* state);
  bool takeFurtherSection(const DirectoryRecord& record, State* state);
  bool nameOf(const DirectoryRecord& record, std::string* name) const;

  /// Attributes from the record alone, then from what `rockRidge_` holds.
  void fillFromRecord(const DirectoryRecord& record, Node* node) const;
  void fillFromRockRidge(Node* node);
  void fillType(Node* node);
  /// Makes the node the directory that begins at `extent`, with that one's own attributes.
  void followChildLink(std::uint64_t extent, Node* node);
  /// Reads the "." record with which the directory at `extent` begins; its spans point into
  /// `selfSector_`.
  bool readSelf(std::uint64_t extent, DirectoryRecord* self);

  BlockSource& source_;
  NodeTable& nodes_;
  RockRidgeReader rockRidgeReader_;
  RockRidge rockRidge_;
  Naming naming_ = Naming::plain;
  std::uint64_t sectorsLeft_;
  std::string name_;
  std::vector<std::uint8_t> sectors_;
  std::vector<std::uint8_t> selfSector_;
};

}  // namespace kelvane::isovolume
