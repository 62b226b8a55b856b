// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <list>
#include <string>
#include <string_view>
#include <unordered_map>

namespace kelvane {

/// The disc paths that the user deleted, in the order of deletion.
///
/// A path may stand in the list more than once; `remove` takes every occurrence. Membership,
/// appending and removal cost the same however long the list is. Not thread-safe: the file system
/// serialises its operations.
class HideList {
 public:
  HideList() = default;
  HideList(const HideList&) = delete;
  HideList& operator=(const HideList&) = delete;

  void append(std::string volumePath);
  void remove(std::string_view volumePath);
  bool contains(std::string_view volumePath) const;
  /// The paths in their order, duplicates included.
  const std::list<std::string>& paths() const { return paths_; }

 private:
  std::list<std::string> paths_;
  // Every occurrence of a path; the keys are views of the strings in paths_.
  std::unordered_multimap<std::string_view, std::list<std::string>::iterator> occurrences_;
};

}  // namespace kelvane
