// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <cstdint>
#include <filesystem>
#include <iosfwd>
#include <map>
#include <string>

#include "helpers/isovolume/iso_volume.h"

namespace kelvane::test {

/// What two trees are compared by. Of a directory, size and links say nothing.
struct FileTreeEntry {
  char kind = '?';  ///< f, d, l, or o for others
  unsigned permissions = 0;
  unsigned user = 0;
  unsigned group = 0;
  std::uint64_t size = 0;
  std::int64_t modified = 0;
  std::string target;
  std::size_t content = 0;  ///< a hash of the bytes

  bool operator==(const FileTreeEntry&) const = default;
};
std::ostream& operator<<(std::ostream& stream, const FileTreeEntry& entry);

/// Paths relative to the root ("a/b"), and what is there.
using FileTree = std::map<std::string, FileTreeEntry>;

/// The tree below a directory of the system, every file read whole.
FileTree treeOfDirectory(const std::filesystem::path& root);

/// The same of a volume. What cannot be listed or read is a test failure.
FileTree treeOfVolume(isovolume::IsoVolume& volume);

/// The entries in which the trees differ, a line each; empty when they are equal.
std::string differences(const FileTree& shown, const FileTree& expected);

/// Without what gets lost where xorriso extracts a tree: the owners, unless root does it, and the
/// times of links.
FileTree asExtracted(FileTree tree);
/// Names and contents only.
FileTree withoutAttributes(FileTree tree);

}  // namespace kelvane::test
