// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <string>
#include <thread>

struct fuse;

namespace kelvane::tests {

/// A read-only file system over another folder, mounted in this process, that breaks where its
/// items' names say so, as a scratched disc does. It shows the items of `source` as they are, but:
///
/// - of a file named "scratched…", reading what lies beyond kReadableBytes gives EIO;
/// - a file named "lost…" is listed, and anything asked of it gives EIO;
/// - listing a directory named "unlisted…" gives EIO.
class FaultyTree {
 public:
  static constexpr off_t kReadableBytes = 256 << 10;

  FaultyTree(std::string source, const std::string& mountPoint);
  ~FaultyTree();
  FaultyTree(const FaultyTree&) = delete;
  FaultyTree& operator=(const FaultyTree&) = delete;

  bool isMounted() const { return isMounted_; }

 private:
  std::string source_;
  std::string mountPoint_;
  fuse* fuse_ = nullptr;
  bool isMounted_ = false;
  std::thread thread_;
};

}  // namespace kelvane::tests
