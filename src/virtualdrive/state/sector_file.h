// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>

#include "virtualdrive/file_descriptor.h"
#include "virtualdrive/medium_kind.h"

namespace kelvane::virtualdrive {

/// The sectors of a disc in a plain file. Opened anew for every command, under the folder's lock.
class SectorFile {
 public:
  static std::optional<SectorFile> open(const std::filesystem::path& path);

  /// Bytes; empty where it cannot be told.
  std::optional<std::uint64_t> length() const;
  /// Reads whole sectors. Holes and what lies beyond the end read as zeros. False on an error of
  /// the file system.
  bool read(Lba first, std::span<std::uint8_t> data) const;
  /// Writes whole sectors. False where not all of them went in.
  bool write(Lba first, std::span<const std::uint8_t> data) const;
  /// Makes the file exactly this long, with zeros where it grows.
  bool resize(Lba sectors) const;

 private:
  explicit SectorFile(FileDescriptor file) : file_(std::move(file)) {}

  FileDescriptor file_;
};

}  // namespace kelvane::virtualdrive
