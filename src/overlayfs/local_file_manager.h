// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <sys/stat.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/userfs/gm_user_file_system_delegate.h"

namespace kelvane {

/// File operations on local paths, as the overlay's rules are written in their terms.
///
/// Paths are absolute, and bytes. Each operation that fails leaves errno's number in `error` where
/// it is given. No state.
class LocalFileManager {
 public:
  /// Of the item itself: a final symbolic link is not followed. Leaves errno alone where there is
  /// none.
  std::optional<struct stat> attributesOfItem(const std::string& path,
                                              PosixError* error = nullptr) const;
  /// Follows symbolic links: a link that leads nowhere does not exist.
  bool fileExists(const std::string& path) const;
  /// The names in the order of the directory; empty where it cannot be read. Leaves errno alone
  /// where there is no directory.
  std::vector<std::string> contentsOfDirectory(const std::string& path) const;
  /// Makes the directory and those above it. True if it is there already; its attributes then stay.
  /// `attributes` are those of the last one.
  bool createDirectory(const std::string& path, const AttributeChanges& attributes,
                       PosixError* error = nullptr) const;
  /// Makes an empty file, or empties the one that is there (never through a symbolic link), and
  /// opens it for reading and writing. -1 where it fails.
  int createFile(const std::string& path, const AttributeChanges& attributes) const;
  /// Removes an item, a directory with its contents. False where anything of it is left.
  bool removeItem(const std::string& path) const;
  /// Copies an item, a directory with its subtree, to a path where nothing is, with permissions and
  /// times; a symbolic link as a link. Where it fails, nothing is left of the copy, and errno says
  /// why.
  bool copyItem(const std::string& source, const std::string& destination) const;
  /// Changes an item itself: a final symbolic link is not followed.
  bool setAttributes(const AttributeChanges& attributes, const std::string& path,
                     PosixError* error = nullptr) const;
  /// Calls `visit` with the path of every item below a directory, itself not included. Does not
  /// follow links.
  void enumerate(
      const std::string& directory,
      const std::function<void(const std::string& path, const struct stat& status)>& visit) const;
  std::optional<std::string> destinationOfSymbolicLink(const std::string& path) const;
};

}  // namespace kelvane
