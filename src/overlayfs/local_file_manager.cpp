// SPDX-License-Identifier: GPL-2.0-or-later
#include "overlayfs/local_file_manager.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>

#include "platform/foundation/paths.h"

namespace kelvane {
namespace {

struct CloseDirectory {
  void operator()(DIR* directory) const { closedir(directory); }
};

bool isDotOrDotDot(const char* name) {
  return name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'));
}

// Stores errno; for `return failed(error);`.
bool failed(PosixError* error) {
  setError(error, errno);
  return false;
}

// Where nothing is, nothing has failed: errno keeps what an operation before has left in it.
bool isNothingThere(int code) {
  return code == ENOENT || code == ENOTDIR;
}

bool isDirectory(const std::string& path) {
  struct stat status = {};
  return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

std::string parentOf(const std::string& path) {
  const size_t slash = path.rfind('/');
  return slash == 0 ? "/" : path.substr(0, slash);
}

bool makeOneDirectory(const std::string& path, const AttributeChanges& attributes,
                      PosixError* error) {
  if (mkdir(path.c_str(), 0777) != 0) {
    if (errno == EEXIST && isDirectory(path)) return true;
    return failed(error);
  }
  return LocalFileManager().setAttributes(attributes, path, error);
}

bool setPermissions(const std::string& path, mode_t permissions) {
  struct stat status = {};
  if (lstat(path.c_str(), &status) != 0) return false;
  if (S_ISLNK(status.st_mode)) {
    errno = EOPNOTSUPP;
    return false;
  }
  return chmod(path.c_str(), permissions & 07777) == 0;
}

bool setOwners(const AttributeChanges& attributes, const std::string& path) {
  constexpr auto kUnchangedUser = static_cast<uid_t>(-1);
  constexpr auto kUnchangedGroup = static_cast<gid_t>(-1);
  return lchown(path.c_str(), attributes.NSFileOwnerAccountID.value_or(kUnchangedUser),
                attributes.NSFileGroupOwnerAccountID.value_or(kUnchangedGroup)) == 0;
}

bool setTimes(const AttributeChanges& attributes, const std::string& path) {
  constexpr timespec kUnchanged{0, UTIME_OMIT};
  const timespec times[2] = {attributes.NSFileAccessDate.value_or(kUnchanged),
                             attributes.NSFileModificationDate.value_or(kUnchanged)};
  return utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW) == 0;
}

}  // namespace

std::optional<struct stat> LocalFileManager::attributesOfItem(const std::string& path,
                                                              PosixError* error) const {
  struct stat status = {};
  const int before = errno;
  if (lstat(path.c_str(), &status) == 0) return status;
  setError(error, errno);
  if (isNothingThere(errno)) errno = before;
  return std::nullopt;
}

bool LocalFileManager::fileExists(const std::string& path) const {
  struct stat status = {};
  return stat(path.c_str(), &status) == 0;
}

std::vector<std::string> LocalFileManager::contentsOfDirectory(const std::string& path) const {
  std::vector<std::string> names;
  const int before = errno;
  const std::unique_ptr<DIR, CloseDirectory> directory(opendir(path.c_str()));
  if (directory == nullptr) {
    if (isNothingThere(errno)) errno = before;
    return names;
  }
  while (const dirent* entry = readdir(directory.get())) {
    if (!isDotOrDotDot(entry->d_name)) names.emplace_back(entry->d_name);
  }
  return names;
}

bool LocalFileManager::createDirectory(const std::string& path, const AttributeChanges& attributes,
                                       PosixError* error) const {
  PosixError reason;
  if (makeOneDirectory(path, attributes, &reason)) return true;
  if (reason.code == ENOENT && path != "/" && path.find('/') != std::string::npos &&
      createDirectory(parentOf(path), {}, error)) {
    return makeOneDirectory(path, attributes, error);
  }
  setError(error, reason.code);
  return false;
}

int LocalFileManager::createFile(const std::string& path,
                                 const AttributeChanges& attributes) const {
  constexpr int kFlags = O_RDWR | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK;
  const int descriptor = open(path.c_str(), kFlags, 0666);
  if (descriptor >= 0 && attributes.NSFilePosixPermissions.has_value()) {
    fchmod(descriptor, *attributes.NSFilePosixPermissions & 07777);
  }
  return descriptor;
}

bool LocalFileManager::removeItem(const std::string& path) const {
  if (unlink(path.c_str()) == 0) return true;
  struct stat status = {};
  if (lstat(path.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) return false;
  // What lies in a directory without write permission can only be removed once it has it.
  if ((status.st_mode & S_IRWXU) != S_IRWXU) chmod(path.c_str(), status.st_mode | S_IRWXU);
  for (const std::string& name : contentsOfDirectory(path)) {
    removeItem(paths::appendPathComponent(path, name));
  }
  return rmdir(path.c_str()) == 0;
}

bool LocalFileManager::setAttributes(const AttributeChanges& attributes, const std::string& path,
                                     PosixError* error) const {
  // Owners before permissions, since a change of owner clears the set-user-ID bit; the length
  // before the times, since cutting changes them.
  if (attributes.NSFileOwnerAccountID.has_value() ||
      attributes.NSFileGroupOwnerAccountID.has_value()) {
    if (!setOwners(attributes, path)) return failed(error);
  }
  if (attributes.NSFilePosixPermissions.has_value() &&
      !setPermissions(path, *attributes.NSFilePosixPermissions)) {
    return failed(error);
  }
  if (attributes.NSFileSize.has_value() && truncate(path.c_str(), *attributes.NSFileSize) != 0) {
    return failed(error);
  }
  if (attributes.NSFileAccessDate.has_value() || attributes.NSFileModificationDate.has_value()) {
    if (!setTimes(attributes, path)) return failed(error);
  }
  // An empty dictionary changes nothing, but only of an item that is there.
  struct stat status = {};
  return lstat(path.c_str(), &status) == 0 || failed(error);
}

void LocalFileManager::enumerate(
    const std::string& directory,
    const std::function<void(const std::string& path, const struct stat& status)>& visit) const {
  for (const std::string& name : contentsOfDirectory(directory)) {
    const std::string path = paths::appendPathComponent(directory, name);
    const std::optional<struct stat> status = attributesOfItem(path);
    if (!status.has_value()) continue;
    visit(path, *status);
    if (S_ISDIR(status->st_mode)) enumerate(path, visit);
  }
}

std::optional<std::string> LocalFileManager::destinationOfSymbolicLink(
    const std::string& path) const {
  std::array<char, PATH_MAX> text;
  const ssize_t length = readlink(path.c_str(), text.data(), text.size());
  if (length < 0) return std::nullopt;
  return std::string(text.data(), static_cast<size_t>(length));
}

}  // namespace kelvane
