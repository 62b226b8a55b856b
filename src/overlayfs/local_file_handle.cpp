// SPDX-License-Identifier: GPL-2.0-or-later
#include "overlayfs/local_file_handle.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace kelvane {
namespace {

// The volume resolves links by itself and opens what they lead to; a link that is opened all the
// same must not lead out of the trees. A pipe must not block the file system.
constexpr int kSafeOpening = O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY;

bool permitsNoWriting(int code) {
  return code == EACCES || code == EPERM || code == EROFS || code == ETXTBSY;
}

}  // namespace

LocalFileHandle::LocalFileHandle(int descriptor, Access access)
    : descriptor_(descriptor), access_(access) {}

LocalFileHandle::~LocalFileHandle() {
  close(descriptor_);
}

std::unique_ptr<LocalFileHandle> LocalFileHandle::forUpdating(const std::string& path,
                                                              PosixError* error) {
  const int descriptor = open(path.c_str(), O_RDWR | kSafeOpening);
  if (descriptor >= 0) {
    return std::make_unique<LocalFileHandle>(descriptor, Access::ReadWrite);
  }
  if (permitsNoWriting(errno)) return forReading(path, error);
  setError(error, errno);
  return nullptr;
}

std::unique_ptr<LocalFileHandle> LocalFileHandle::forReading(const std::string& path,
                                                             PosixError* error) {
  const int descriptor = open(path.c_str(), O_RDONLY | kSafeOpening);
  if (descriptor < 0) {
    setError(error, errno);
    return nullptr;
  }
  auto handle = std::make_unique<LocalFileHandle>(descriptor, Access::ReadOnly);
  struct stat status = {};
  if (fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
    setError(error, S_ISDIR(status.st_mode) ? EISDIR : EIO);
    return nullptr;
  }
  return handle;
}

size_t LocalFileHandle::read(char* buffer, size_t size, off_t offset, PosixError* error) const {
  size_t done = 0;
  while (done < size) {
    const ssize_t count =
        pread(descriptor_, buffer + done, size - done, offset + static_cast<off_t>(done));
    if (count == 0) break;
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) {
      setError(error, errno);
      break;
    }
    done += static_cast<size_t>(count);
  }
  return done;
}

bool LocalFileHandle::write(const char* buffer, size_t size, off_t offset,
                            PosixError* error) const {
  size_t done = 0;
  while (done < size) {
    const ssize_t count =
        pwrite(descriptor_, buffer + done, size - done, offset + static_cast<off_t>(done));
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) {
      setError(error, count < 0 ? errno : EIO);
      return false;
    }
    done += static_cast<size_t>(count);
  }
  return true;
}

}  // namespace kelvane
