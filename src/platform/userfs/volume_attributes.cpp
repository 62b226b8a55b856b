// SPDX-License-Identifier: GPL-2.0-or-later
// Changes of attributes: length, permissions, owners, times.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "platform/userfs/volume.h"

namespace kelvane::userfs {
namespace {

constexpr mode_t kPermissionBits = 07777;

timespec timeOf(const timespec& given, int which, int nowFlag) {
  return (which & nowFlag) != 0 ? timespec{0, UTIME_NOW} : given;
}

AttributeChanges changesOf(const struct stat& wanted, int which) {
  AttributeChanges changes;
  if ((which & FUSE_SET_ATTR_MODE) != 0) {
    changes.NSFilePosixPermissions = wanted.st_mode & kPermissionBits;
  }
  if ((which & FUSE_SET_ATTR_UID) != 0) changes.NSFileOwnerAccountID = wanted.st_uid;
  if ((which & FUSE_SET_ATTR_GID) != 0) changes.NSFileGroupOwnerAccountID = wanted.st_gid;
  if ((which & FUSE_SET_ATTR_SIZE) != 0) changes.NSFileSize = wanted.st_size;
  if ((which & (FUSE_SET_ATTR_ATIME | FUSE_SET_ATTR_ATIME_NOW)) != 0) {
    changes.NSFileAccessDate = timeOf(wanted.st_atim, which, FUSE_SET_ATTR_ATIME_NOW);
  }
  if ((which & (FUSE_SET_ATTR_MTIME | FUSE_SET_ATTR_MTIME_NOW)) != 0) {
    changes.NSFileModificationDate = timeOf(wanted.st_mtim, which, FUSE_SET_ATTR_MTIME_NOW);
  }
  return changes;
}

bool isEmpty(const AttributeChanges& changes) {
  return !changes.NSFilePosixPermissions && !changes.NSFileOwnerAccountID &&
         !changes.NSFileGroupOwnerAccountID && !changes.NSFileSize && !changes.NSFileAccessDate &&
         !changes.NSFileModificationDate;
}

bool isSame(const std::optional<timespec>& wanted, const timespec& present) {
  return wanted.has_value() && wanted->tv_sec == present.tv_sec &&
         wanted->tv_nsec == present.tv_nsec;
}

// What of the changes would make a difference.
AttributeChanges differencesFrom(const struct stat& present, AttributeChanges changes) {
  if (changes.NSFilePosixPermissions == (present.st_mode & kPermissionBits)) {
    changes.NSFilePosixPermissions.reset();
  }
  if (changes.NSFileOwnerAccountID == present.st_uid) changes.NSFileOwnerAccountID.reset();
  if (changes.NSFileGroupOwnerAccountID == present.st_gid) {
    changes.NSFileGroupOwnerAccountID.reset();
  }
  // To empty a file that is empty already makes it one that can be written.
  if (changes.NSFileSize == present.st_size && changes.NSFileSize != 0) changes.NSFileSize.reset();
  if (isSame(changes.NSFileAccessDate, present.st_atim)) changes.NSFileAccessDate.reset();
  if (isSame(changes.NSFileModificationDate, present.st_mtim)) {
    changes.NSFileModificationDate.reset();
  }
  return changes;
}

}  // namespace

void Volume::setattr(fuse_req_t request, fuse_ino_t number, const struct stat& wanted, int which) {
  Node* const node = nodes_.nodeOf(number);
  const int code = setItemAttributes(node, changesOf(wanted, which));
  if (code != 0) {
    fuse_reply_err(request, code);
  } else {
    getattr(request, number);
  }
}

int Volume::setItemAttributes(Node* node, AttributeChanges changes) {
  const std::string path = nodes_.pathOf(node);
  const auto item = nodes_.isLinked(node) ? itemAt(path) : std::nullopt;
  if (!item.has_value()) {
    return node->openFiles == nullptr ? ESTALE : setOpenFileAttributes(*node->openFiles, changes);
  }
  if (node == nodes_.root()) rememberRootAttributes(&changes);
  if (isEmpty(changes)) return 0;
  if (item->isReadOnly()) return setReadOnlyItemAttributes(node, *item, changes);
  return applyAttributes(path, changes);
}

// The root's folder lies where other users can see it and stays its owner's alone. The volume shows
// what was set all the same.
void Volume::rememberRootAttributes(AttributeChanges* changes) {
  const auto take = [](auto& from, auto& to) {
    if (from.has_value()) to = std::exchange(from, std::nullopt);
  };
  take(changes->NSFilePosixPermissions, shownOfRoot_.NSFilePosixPermissions);
  take(changes->NSFileOwnerAccountID, shownOfRoot_.NSFileOwnerAccountID);
  take(changes->NSFileGroupOwnerAccountID, shownOfRoot_.NSFileGroupOwnerAccountID);
}

int Volume::applyAttributes(const std::string& path, const AttributeChanges& changes) {
  PosixError error;
  const bool done = delegate_->setAttributes(changes, path, nullptr, &error);
  return done && !error.isSet() ? 0 : numberOf(error, EPERM);
}

int Volume::setReadOnlyItemAttributes(Node* node, const Item& item, AttributeChanges changes) {
  const std::string path = nodes_.pathOf(node);
  changes = differencesFrom(item.status, changes);
  if (isEmpty(changes)) return 0;
  if (item.isDirectory()) {
    const int code = shadowDirectory(path, item, changes);
    parentsBecameWritable(node->parent);
    return code;
  }
  if (!changes.NSFileSize.has_value() || *changes.NSFileSize != 0) return EROFS;
  std::unique_ptr<UserData> userData;
  if (const int code = emptyReadOnlyFile(node, item, &userData)) return code;
  delegate_->releaseFileAtPath(path, std::move(userData));
  changes.NSFileSize.reset();
  return isEmpty(changes) ? 0 : applyAttributes(path, changes);
}

// A writable directory at the path of one that is only readable: what it lists stays the same, so
// that only the attributes change.
int Volume::shadowDirectory(const std::string& path, const Item& item, AttributeChanges changes) {
  PosixError error;
  AttributeChanges present;
  present.NSFilePosixPermissions = item.status.st_mode & kPermissionBits;
  itemsMayAppear();
  if (!delegate_->createDirectoryAtPath(path, present, &error)) return numberOf(error, EIO);
  // Who sets one of the times leaves the other as it was.
  if (!changes.NSFileModificationDate) changes.NSFileModificationDate = item.status.st_mtim;
  if (!changes.NSFileAccessDate) changes.NSFileAccessDate = item.status.st_atim;
  return applyAttributes(path, changes);
}

// Of a file whose name is gone: through its descriptor.
int Volume::setOpenFileAttributes(const OpenFile& file, const AttributeChanges& changes) {
  const int descriptor = file.userData->fileDescriptor();
  if (descriptor < 0 || !file.userData->isWritable()) return EROFS;
  if (changes.NSFilePosixPermissions && fchmod(descriptor, *changes.NSFilePosixPermissions) != 0) {
    return errno;
  }
  if (changes.NSFileOwnerAccountID || changes.NSFileGroupOwnerAccountID) {
    const uid_t user = changes.NSFileOwnerAccountID.value_or(static_cast<uid_t>(-1));
    const gid_t group = changes.NSFileGroupOwnerAccountID.value_or(static_cast<gid_t>(-1));
    if (fchown(descriptor, user, group) != 0) return errno;
  }
  if (changes.NSFileSize && ftruncate(descriptor, *changes.NSFileSize) != 0) return errno;
  if (changes.NSFileAccessDate || changes.NSFileModificationDate) {
    constexpr timespec kUnchanged{0, UTIME_OMIT};
    const timespec times[2] = {changes.NSFileAccessDate.value_or(kUnchanged),
                               changes.NSFileModificationDate.value_or(kUnchanged)};
    if (futimens(descriptor, times) != 0) return errno;
  }
  return 0;
}

}  // namespace kelvane::userfs
