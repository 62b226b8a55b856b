// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "helpers/isovolume/block_source.h"
#include "helpers/isovolume/volume_types.h"

namespace kelvane::isovolume {

class DirectoryTree;

/// The block at which the session to be read begins, as the drive's table of contents gives it; 0
/// for the first one. All addresses on a disc count from its beginning, so a session continues its
/// predecessors by pointing at their blocks.
struct SessionStart {
  Lba lba = 0;
};

/// What a node is, in the terms of stat(2).
struct Attributes {
  mode_t mode = 0;         ///< type and permissions
  std::uint64_t size = 0;  ///< bytes; of a symbolic link the length of its target
  std::uint32_t links = 1;
  std::uint32_t user = 0;
  std::uint32_t group = 0;
  std::uint32_t device = 0;   ///< of a device node
  std::int64_t modified = 0;  ///< seconds since 1970
  std::int64_t accessed = 0;
  std::int64_t changed = 0;
};

/// An entry of a directory.
struct DirectoryEntry {
  NodeId node = 0;
  std::string_view name;  ///< valid as long as the volume
  mode_t type = 0;        ///< the S_IFMT part of the mode
};

/// A run of bytes of the source that are a file's bytes.
struct ByteRange {
  std::uint64_t position = 0;
  std::uint64_t length = 0;
};

/// One session's ISO-9660 volume (ECMA-119) for reading: with Rock Ridge where the disc has it,
/// else with Joliet, else with the plain names as Linux shows them. Files of several sections are
/// whole, relocated directories stand where they belong.
///
/// Directories are read when they are first asked for, and remembered. What is damaged on the disc
/// is left out or fails when it is read; everything else stays usable. Whatever the disc says,
/// reads stay inside the source, and time and memory are bounded by the source's size. Names that
/// contain "/" or NUL, "." and ".." are left out. Of two entries of a directory with the same name
/// the first is shown.
///
/// Not thread-safe.
class IsoVolume {
 public:
  /// Opens the volume of a session and reads its root directory. `source` is borrowed for the
  /// volume's life. Null when there is no volume or its root cannot be read, with the reason in
  /// words in `*error`.
  static std::unique_ptr<IsoVolume> open(BlockSource& source, SessionStart start,
                                         std::string* error);

  ~IsoVolume();
  IsoVolume(const IsoVolume&) = delete;
  IsoVolume& operator=(const IsoVolume&) = delete;

  /// The root's handle is kRootNode. `name` is one component; "." and ".." are not looked up.
  Status lookup(NodeId directory, std::string_view name, NodeId* child);

  /// Follows a path of components separated by "/" from the root. Symbolic links are not followed.
  Status lookupPath(std::string_view path, NodeId* node);

  /// Calls `visit` for the entries of `directory` in the order of the disc, without "." and "..",
  /// beginning behind `position` (0: the first entry), until `visit` returns false. It gets the
  /// position at which to go on behind the entry. Positions stay valid as long as the volume.
  using Visitor = std::function<bool(const DirectoryEntry& entry, std::uint64_t next)>;
  Status readDirectory(NodeId directory, std::uint64_t position, const Visitor& visit);

  /// Whether `node` is a handle that was given out.
  [[nodiscard]] bool contains(NodeId node) const;
  /// The rest is only for such handles.
  [[nodiscard]] Attributes attributes(NodeId node) const;
  [[nodiscard]] NodeId parent(NodeId node) const;          ///< the root's is the root
  [[nodiscard]] std::string_view name(NodeId node) const;  ///< the root's is empty

  /// Reads from byte `offset` of a file on; `*length` tells how much, which is less than asked for
  /// only at the file's end. `damaged` when the source does not have all of it.
  Status readFile(NodeId file, std::uint64_t offset, std::span<std::uint8_t> out,
                  std::size_t* length);

  /// Where those bytes stand in the source. Every range lies inside the source, as large as it is
  /// now.
  Status locate(NodeId file, std::uint64_t offset, std::uint64_t length,
                std::vector<ByteRange>* ranges);

  Status readLink(NodeId link, std::string* target);

  [[nodiscard]] Naming naming() const { return naming_; }
  /// The volume's name as a user knows it: the one of ISO-9660, or Joliet's where that says more.
  /// It is fit to be a file name ("/" and control characters are "_") except that it may be empty.
  [[nodiscard]] const std::string& volumeId() const { return volumeId_; }
  /// In blocks, from the descriptor; of a session that continues others it covers that session
  /// alone.
  [[nodiscard]] std::uint32_t volumeSpaceSize() const { return volumeSpaceSize_; }

  /// Whether the session has its primary volume descriptor (ECMA-119, 8.4). A volume that lost it
  /// can still be read, through its Joliet tree, but no program can continue it.
  [[nodiscard]] bool hasPrimaryDescriptor() const { return hasPrimaryDescriptor_; }
  /// The block at which the root directory begins.
  [[nodiscard]] std::uint64_t rootExtent() const;

 private:
  IsoVolume(BlockSource& source, Naming naming, std::unique_ptr<DirectoryTree> tree);

  BlockSource& source_;
  Naming naming_;
  std::unique_ptr<DirectoryTree> tree_;
  std::string volumeId_;
  bool hasPrimaryDescriptor_ = false;
  std::uint32_t volumeSpaceSize_ = 0;
};

}  // namespace kelvane::isovolume
