// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <map>
#include <optional>
#include <string>

namespace kelvane {

/// Which items of the overlay are items of the disc under another name, unchanged.
///
/// A move of a disc item copies it into the overlay and hides it at its old path; seen from
/// outside, that is a deletion and an addition. This remembers that they belong together. It costs
/// nothing as long as nothing was moved. Not thread-safe: the file system serialises its
/// operations.
class MovedItems {
 public:
  /// The disc item at `source`, with all that is in it, was copied to `destination`.
  void noteCopyUp(const std::string& source, const std::string& destination);
  /// The overlay item, with all that is in it, has a new path. What stood there is gone.
  void noteRename(const std::string& from, const std::string& to);
  /// What stands at the path now is the user's: it was made, or written to.
  void noteChange(const std::string& path);
  /// Nothing stands at the path any more.
  void noteRemoval(const std::string& path);

  /// The path on the disc of what the overlay has at `path`; empty where it did not come from
  /// there, or has been changed since.
  std::optional<std::string> originOf(const std::string& path) const;

 private:
  // The nearest path, among an item's own and those of the directories around it, decides. An empty
  // origin is none.
  std::map<std::string, std::string> origins_;
};

}  // namespace kelvane
