// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <sys/stat.h>

#include <string>
#include <string_view>
#include <vector>

namespace kelvane::tests {

/// A temporary folder with a "disc" and, where the delegate makes it, an overlay directory
/// "tmp/812". It is the prefix of the application's fixed paths while it lives; removed at the end.
class OverlayTrees {
 public:
  OverlayTrees();
  ~OverlayTrees();
  OverlayTrees(const OverlayTrees&) = delete;
  OverlayTrees& operator=(const OverlayTrees&) = delete;

  std::string root() const { return root_; }
  std::string disc() const { return root_ + "/disc"; }
  std::string overlay() const { return root_ + "/tmp/812"; }
  std::string hideListFile() const { return root_ + "/tmp/.812.hide"; }

  /// Makes a file of the disc, and the directories above it.
  void addDiscFile(const std::string& path, std::string_view content, mode_t mode = 0444) const;
  void addDiscDirectory(const std::string& path, mode_t mode = 0555) const;
  void addDiscLink(const std::string& path, const std::string& text) const;
  /// Takes all write permissions from the disc's tree, as a mounted disc has none.
  void sealDisc() const;

 private:
  std::string root_;
};

/// The content of a file; "<missing>" where it cannot be read.
std::string contentOf(const std::string& path);
void writeFile(const std::string& path, std::string_view content);
/// The names in a directory, sorted, without "." and "..".
std::vector<std::string> namesIn(const std::string& directory);
bool exists(const std::string& path);  ///< A link counts, wherever it leads.
struct stat statusOf(const std::string& path);

/// What a shell command printed (both streams) and how it ended.
struct CommandResult {
  int status = -1;
  std::string output;
};
CommandResult runShell(const std::string& command);

}  // namespace kelvane::tests
