// SPDX-License-Identifier: GPL-2.0-or-later
// Copying of local items with their subtree.
#include <fcntl.h>
#include <sys/sendfile.h>
#include <unistd.h>

#include <cerrno>

#include "overlayfs/local_file_handle.h"
#include "overlayfs/local_file_manager.h"
#include "platform/foundation/paths.h"

namespace kelvane {
namespace {

bool copyBytes(int from, int to) {
  constexpr size_t kChunk = size_t{1} << 20;
  while (true) {
    const ssize_t count = sendfile(to, from, nullptr, kChunk);
    if (count == 0) return true;
    if (count < 0 && errno != EINTR) return false;
  }
}

void setTimesOf(const struct stat& status, const std::string& path) {
  const timespec times[2] = {status.st_atim, status.st_mtim};
  utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW);
}

bool copyFile(const std::string& source, const struct stat& status,
              const std::string& destination) {
  PosixError ignored;
  const auto from = LocalFileHandle::forReading(source, &ignored);
  if (from == nullptr) return false;
  constexpr int kFlags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
  const int descriptor = open(destination.c_str(), kFlags, 0600);
  if (descriptor < 0) return false;
  const LocalFileHandle to(descriptor, LocalFileHandle::Access::ReadWrite);
  if (!copyBytes(from->fileDescriptor(), descriptor)) return false;
  fchmod(descriptor, status.st_mode & 07777);
  setTimesOf(status, destination);
  return true;
}

bool copyLink(const std::string& source, const struct stat& status,
              const std::string& destination) {
  const auto text = LocalFileManager().destinationOfSymbolicLink(source);
  if (!text.has_value() || symlink(text->c_str(), destination.c_str()) != 0) return false;
  setTimesOf(status, destination);
  return true;
}

bool copyAny(const std::string& source, const std::string& destination);

bool copyDirectory(const std::string& source, const struct stat& status,
                   const std::string& destination) {
  if (mkdir(destination.c_str(), 0700) != 0) return false;
  errno = 0;
  const std::vector<std::string> names = LocalFileManager().contentsOfDirectory(source);
  if (errno != 0) return false;  // What cannot be read, or not to its end, is not empty.
  for (const std::string& name : names) {
    if (!copyAny(paths::appendPathComponent(source, name),
                 paths::appendPathComponent(destination, name))) {
      return false;
    }
  }
  // Last, since the permissions may forbid making entries and every entry changes the times.
  chmod(destination.c_str(), status.st_mode & 07777);
  setTimesOf(status, destination);
  return true;
}

bool copyAny(const std::string& source, const std::string& destination) {
  struct stat status = {};
  if (lstat(source.c_str(), &status) != 0) return false;
  if (S_ISDIR(status.st_mode)) return copyDirectory(source, status, destination);
  if (S_ISLNK(status.st_mode)) return copyLink(source, status, destination);
  if (S_ISREG(status.st_mode)) return copyFile(source, status, destination);
  return false;  // Device nodes, pipes and sockets have no content to copy.
}

}  // namespace

bool LocalFileManager::copyItem(const std::string& source, const std::string& destination) const {
  if (attributesOfItem(destination).has_value()) return false;
  if (copyAny(source, destination)) return true;
  const int reason = errno;
  removeItem(destination);
  errno = reason;
  return false;
}

}  // namespace kelvane
