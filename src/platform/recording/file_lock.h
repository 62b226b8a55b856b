// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace kelvane {

/// An advisory lock (flock) on a file, device node or folder; held until the object is destroyed or
/// the process ends, however it ends. Children do not inherit it.
class FileLock {
 public:
  /// Takes the lock; tries for `patience` while somebody else has it. Empty where it cannot be had,
  /// or where the path cannot be opened.
  static std::optional<FileLock> acquire(const std::string& path,
                                         std::chrono::milliseconds patience);

  /// Whether anybody, this process included, holds the lock at this moment.
  static bool isHeld(const std::string& path);

  FileLock(FileLock&& other) noexcept;
  FileLock& operator=(FileLock&& other) noexcept;
  FileLock(const FileLock&) = delete;
  FileLock& operator=(const FileLock&) = delete;
  ~FileLock();

 private:
  explicit FileLock(int descriptor) : descriptor_(descriptor) {}

  int descriptor_;
};

}  // namespace kelvane
