// SPDX-License-Identifier: GPL-2.0-or-later
#include "helpers/isovolume/block_source.h"

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace kelvane::isovolume {

std::unique_ptr<FileBlockSource> FileBlockSource::open(const std::string& path,
                                                       std::string* error) {
  // O_NONBLOCK keeps the open of a named pipe from waiting for ever; reads of files and devices do
  // not heed it.
  const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
  if (descriptor < 0) {
    *error = "cannot open " + path + ": " + std::strerror(errno);
    return nullptr;
  }
  struct stat status = {};
  if (fstat(descriptor, &status) == 0) {
    if (S_ISREG(status.st_mode)) {
      return std::unique_ptr<FileBlockSource>(new FileBlockSource(descriptor, 0));
    }
    std::uint64_t bytes = 0;
    if (S_ISBLK(status.st_mode) && ioctl(descriptor, BLKGETSIZE64, &bytes) == 0) {
      return std::unique_ptr<FileBlockSource>(new FileBlockSource(descriptor, bytes / kBlockSize));
    }
  }
  close(descriptor);
  *error = path + " is neither a file nor a block device with a medium";
  return nullptr;
}

FileBlockSource::~FileBlockSource() {
  close(descriptor_);
}

bool FileBlockSource::readBlocks(std::uint64_t first, std::span<std::uint8_t> out) {
  if (first > UINT32_MAX) return false;
  auto position = static_cast<off_t>(first * kBlockSize);
  while (!out.empty()) {
    const ssize_t got = pread(descriptor_, out.data(), out.size(), position);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return false;
    out = out.subspan(static_cast<std::size_t>(got));
    position += got;
  }
  return true;
}

std::uint64_t FileBlockSource::sizeInBlocks() const {
  if (deviceBlocks_ != 0) return deviceBlocks_;
  struct stat status = {};
  if (fstat(descriptor_, &status) != 0) return 0;
  return static_cast<std::uint64_t>(status.st_size) / kBlockSize;
}

}  // namespace kelvane::isovolume
