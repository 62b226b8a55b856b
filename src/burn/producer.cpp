// SPDX-License-Identifier: GPL-2.0-or-later
#include "burn/producer.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

namespace kelvane {
namespace {

constexpr int32_t kBlockBytes = 2048;
// Dropping page by page would cost a system call for every block.
constexpr off_t kDropInterval = 1 << 20;

// The size as a signed number of 32 bits; 0 where there is no file.
int32_t sizeOf(const std::string& path) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) return 0;
  return static_cast<int32_t>(status.st_size);
}

// Reads until the buffer is full, the file ends or reading fails; gives the number of bytes read.
size_t readFully(int descriptor, char* buffer, size_t length) {
  size_t done = 0;
  while (done < length) {
    const ssize_t count = read(descriptor, buffer + done, length - done);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) break;
    done += static_cast<size_t>(count);
  }
  return done;
}

}  // namespace

Producer::~Producer() {
  cleanupTrackAfterBurn(nullptr);
}

void Producer::setFilePath(std::string path) {
  filePath = std::move(path);
}

DRMSF Producer::fileSize() const {
  return DRMSF::msfWithFrames(static_cast<uint32_t>(sizeOf(filePath) / kBlockBytes));
}

bool Producer::prepareTrack(DRTrack*, DRBurn*, const DRDeviceMediaInfo*) {
  cleanupTrackAfterBurn(nullptr);
  FileSize = static_cast<uint32_t>(sizeOf(filePath));
  FilePosition = 0;
  droppedUpTo_ = 0;
  file = open(filePath.c_str(), O_RDONLY | O_CLOEXEC);
  return true;
}

uint32_t Producer::produceDataForTrack(DRTrack*, char* intoBuffer, uint32_t length, uint64_t,
                                       uint32_t, uint32_t*) {
  if (FilePosition == FileSize) {
    dropFromCache(FilePosition);
    FilePosition = 0;
    droppedUpTo_ = 0;
    if (file >= 0) lseek(file, 0, SEEK_SET);
  }
  const uint32_t count = std::min(FileSize - FilePosition, length);
  const size_t delivered = readFully(file, intoBuffer, count);
  std::memset(intoBuffer + delivered, 0, count - delivered);
  FilePosition += count;
  if (off_t{FilePosition} - droppedUpTo_ >= kDropInterval) dropFromCache(FilePosition);
  return count;
}

// The kernel drops whole pages only, so the one that is half read stays for the next time.
void Producer::dropFromCache(off_t end) {
  if (file < 0 || end <= droppedUpTo_) return;
  posix_fadvise(file, droppedUpTo_, end - droppedUpTo_, POSIX_FADV_DONTNEED);
  const off_t pageBytes = sysconf(_SC_PAGESIZE);
  droppedUpTo_ = end - end % pageBytes;
}

void Producer::cleanupTrackAfterBurn(DRTrack*) {
  if (file < 0) return;
  dropFromCache(FilePosition);
  close(file);
  file = -1;
}

}  // namespace kelvane
