// SPDX-License-Identifier: GPL-2.0-or-later
#include "virtualdrive/state/sector_file.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>

namespace kelvane::virtualdrive {

off_t SectorFile::offsetOf(Lba sector) const {
  return static_cast<off_t>(sector) * static_cast<off_t>(sectorBytes_);
}

std::optional<SectorFile> SectorFile::open(const std::filesystem::path& path,
                                           std::size_t sectorBytes) {
  // Neither a device nor a pipe that someone has put there may be opened, nor waited for.
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
  FileDescriptor file(::open(path.c_str(), O_RDWR | O_CLOEXEC | O_NONBLOCK));
  if (!file) file = FileDescriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  if (!file) return std::nullopt;
  return SectorFile(std::move(file), sectorBytes);
}

std::optional<std::uint64_t> SectorFile::length() const {
  const auto end = lseek(file_.get(), 0, SEEK_END);
  if (end < 0) return std::nullopt;
  return static_cast<std::uint64_t>(end);
}

bool SectorFile::read(Lba first, std::span<std::uint8_t> data) const {
  auto offset = offsetOf(first);
  while (!data.empty()) {
    const auto count = pread(file_.get(), data.data(), data.size(), offset);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return false;
    if (count == 0) {
      std::ranges::fill(data, std::uint8_t{0});
      return true;
    }
    data = data.subspan(static_cast<std::size_t>(count));
    offset += count;
  }
  return true;
}

bool SectorFile::write(Lba first, std::span<const std::uint8_t> data) const {
  auto offset = offsetOf(first);
  while (!data.empty()) {
    const auto count = pwrite(file_.get(), data.data(), data.size(), offset);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return false;
    data = data.subspan(static_cast<std::size_t>(count));
    offset += count;
  }
  return true;
}

bool SectorFile::resize(Lba sectors) const {
  int result = 0;
  do {
    result = ftruncate(file_.get(), offsetOf(sectors));
  } while (result != 0 && errno == EINTR);
  return result == 0;
}

}  // namespace kelvane::virtualdrive
