// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/foundation/own_files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <optional>
#include <system_error>

namespace kelvane {
namespace {

// Empty where nothing is there. What cannot be looked at counts as root's.
std::optional<struct stat> statusOf(const std::string& path) {
  struct stat status = {};
  if (lstat(path.c_str(), &status) == 0) return status;
  if (errno == ENOENT || errno == ENOTDIR) return std::nullopt;
  return status;
}

PathState ownIf(bool isOwn) {
  return isOwn ? PathState::Own : PathState::Foreign;
}

}  // namespace

PathState directoryState(const std::string& path) {
  const auto status = statusOf(path);
  if (!status.has_value()) return PathState::Free;
  return ownIf(S_ISDIR(status->st_mode) && status->st_uid == geteuid());
}

PathState plainFileState(const std::string& path) {
  const auto status = statusOf(path);
  if (!status.has_value()) return PathState::Free;
  return ownIf(S_ISREG(status->st_mode) && status->st_uid == geteuid() && status->st_nlink == 1);
}

bool makeOwnFile(const std::string& path) {
  constexpr int kFlags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
  const int descriptor = open(path.c_str(), kFlags, S_IRUSR | S_IWUSR);
  if (descriptor >= 0) {
    close(descriptor);
    return true;
  }
  return errno == EEXIST && plainFileState(path) == PathState::Own;
}

void removeOwn(const std::string& path) {
  struct stat status = {};
  if (lstat(path.c_str(), &status) != 0 || status.st_uid != geteuid()) return;
  std::error_code failure;
  std::filesystem::remove_all(path, failure);
}

}  // namespace kelvane
