// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>

#include "virtualdrive/file_descriptor.h"
#include "virtualdrive/medium_kind.h"

namespace kelvane::virtualdrive {

/// Sectors of a disc in a plain file, by LBA. Opened anew for every command, under the folder's
/// lock.
class SectorFile {
 public:
  static std::optional<SectorFile> open(const std::filesystem::path& path, std::size_t sectorBytes);

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
  SectorFile(FileDescriptor file, std::size_t sectorBytes)
      : file_(std::move(file)), sectorBytes_(sectorBytes) {}
  off_t offsetOf(Lba sector) const;

  FileDescriptor file_;
  std::size_t sectorBytes_;
};

}  // namespace kelvane::virtualdrive
