// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace kelvane::isovolume {

/// Bytes of one block, which is the sector of every disc this reader knows.
inline constexpr std::size_t kBlockSize = 2048;

/// The address of a block, counted from the beginning of the disc.
using Lba = std::uint32_t;

using Bytes = std::span<const std::uint8_t>;

/// Whence a volume's blocks come: positional reads that leave no trace in the source.
class BlockSource {
 public:
  virtual ~BlockSource() = default;

  /// Fills `out`, whose size is a multiple of kBlockSize, with the blocks from `first` on. All or
  /// nothing: false when any of them cannot be read or lies beyond the end, and `out` is then of no
  /// meaning. Whoever follows numbers found on the disc asks for nothing beyond the end: a drive
  /// may take long to say no.
  [[nodiscard]] virtual bool readBlocks(std::uint64_t first, std::span<std::uint8_t> out) = 0;

  /// The number of whole blocks that the source has now.
  [[nodiscard]] virtual std::uint64_t sizeInBlocks() const = 0;
};

/// The blocks of a plain file or a block device, by descriptor.
class FileBlockSource final : public BlockSource {
 public:
  /// Opens `path` for reading. Null on failure, with the reason in words in `*error`.
  [[nodiscard]] static std::unique_ptr<FileBlockSource> open(const std::string& path,
                                                             std::string* error);

  ~FileBlockSource() override;
  FileBlockSource(const FileBlockSource&) = delete;
  FileBlockSource& operator=(const FileBlockSource&) = delete;

  [[nodiscard]] bool readBlocks(std::uint64_t first, std::span<std::uint8_t> out) override;

  /// A plain file may grow while it is open and is asked each time; a device has the size it had
  /// when it was opened.
  [[nodiscard]] std::uint64_t sizeInBlocks() const override;

  /// Borrowed; open as long as this object lives.
  [[nodiscard]] int descriptor() const { return descriptor_; }

 private:
  FileBlockSource(int descriptor, std::uint64_t deviceBlocks)
      : descriptor_(descriptor), deviceBlocks_(deviceBlocks) {}

  int descriptor_;
  std::uint64_t deviceBlocks_;  ///< 0 for a plain file
};

}  // namespace kelvane::isovolume
