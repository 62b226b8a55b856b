// SPDX-License-Identifier: GPL-2.0-or-later
// Creation, moving and removal of items.
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>

#include "overlayfs/burn_fs_delegate.h"
#include "overlayfs/local_file_handle.h"
#include "platform/foundation/paths.h"
#include "platform/foundation/system_log.h"

namespace kelvane {
namespace {

constexpr mode_t kReadAndWriteForAll = 0666;

std::string parentOf(const std::string& path) {
  return path.substr(0, path.rfind('/'));
}

}  // namespace

// False, with errno set, where the directories are not there then.
bool BurnFSDelegate::makeOverlayParent(const std::string& volumePath) {
  const std::string parent = parentOf(overlayPath(volumePath));
  if (fm.fileExists(parent)) return true;
  restoreOverlayDirectory();
  return fm.createDirectory(parent, {});
}

// Where the overlay directory has vanished, the new one is its owner's alone, too.
void BurnFSDelegate::restoreOverlayDirectory() {
  mkdir(tmpDirPath.c_str(), S_IRWXU);
}

// Makes an empty file and the directories above it. These are mostly there: they are made only
// where the file tells that they are not. -1, with errno set, where it fails.
int BurnFSDelegate::createOverlayFile(const std::string& volumePath,
                                      const AttributeChanges& attributes) {
  const std::string path = overlayPath(volumePath);
  const int descriptor = fm.createFile(path, attributes);
  if (descriptor >= 0 || errno != ENOENT) return descriptor;
  return makeOverlayParent(volumePath) ? fm.createFile(path, attributes) : -1;
}

// The same for a rename. False, with errno set, where it fails.
bool BurnFSDelegate::renameInOverlay(const std::string& from, const std::string& to,
                                     const std::string& destination) {
  if (std::rename(from.c_str(), to.c_str()) == 0) return true;
  if (errno != ENOENT) return false;
  return makeOverlayParent(destination) && std::rename(from.c_str(), to.c_str()) == 0;
}

bool BurnFSDelegate::createDirectoryAtPath(const std::string& path,
                                           const AttributeChanges& attributes, PosixError* error) {
  hideArray.remove(path);
  restoreOverlayDirectory();
  const bool made = fm.createDirectory(overlayPath(path), attributes, error);
  cutOffDiscLink(path);
  return made;
}

bool BurnFSDelegate::createFileAtPath(const std::string& path, const AttributeChanges& attributes,
                                      std::unique_ptr<UserData>* userData, PosixError* error) {
  if (!hasSpace()) {
    setError(error, ENOSPC);
    return false;
  }
  hideArray.remove(path);
  const int descriptor = createOverlayFile(path, attributes);
  if (descriptor < 0) return false;
  movedItems_.noteChange(path);
  *userData = std::make_unique<LocalFileHandle>(descriptor, LocalFileHandle::Access::ReadWrite);
  return true;
}

bool BurnFSDelegate::moveItemAtPath(const std::string& source, const std::string& destination,
                                    PosixError* error) {
  if (destination.starts_with("/.Trashes")) {
    removeItemAtPath(source, nullptr);
    return true;
  }
  const std::string from = overlayPath(source);
  const std::string to = overlayPath(destination);
  if (fm.fileExists(from)) {
    if (!renameInOverlay(from, to, destination)) {
      setError(error, errno);
      return true;  // With the error set: what calls looks at it.
    }
    movedItems_.noteRename(source, destination);
    hideArray.remove(destination);
    cutOffDiscLink(destination);
    return true;
  }
  if (!discHasItem(source) || !fm.fileExists(discPath(source))) return false;
  return copyUp(source, destination);
}

bool BurnFSDelegate::copyUp(const std::string& source, const std::string& destination) {
  const std::string copy = overlayPath(destination);
  if (!makeOverlayParent(destination)) return false;
  if (!fm.copyItem(discPath(source), copy)) return false;
  removeItemAtPath(source, nullptr);
  movedItems_.noteCopyUp(source, destination);
  hideArray.remove(destination);
  cutOffDiscLink(destination);
  widenPermissions(copy);
  return true;
}

void BurnFSDelegate::widenPermissions(const std::string& overlayItem) {
  const auto widen = [this](const std::string& path, const struct stat& status) {
    AttributeChanges changes;
    changes.NSFilePosixPermissions = (status.st_mode | kReadAndWriteForAll) & 07777;
    fm.setAttributes(changes, path);
  };
  const auto status = fm.attributesOfItem(overlayItem);
  if (!status.has_value()) return;
  widen(overlayItem, *status);
  if (S_ISDIR(status->st_mode)) fm.enumerate(overlayItem, widen);
}

bool BurnFSDelegate::removeItemAtPath(const std::string& path, PosixError* /*error*/) {
  if (const auto status = fm.attributesOfItem(overlayPath(path))) {
    if (!fm.removeItem(overlayPath(path))) {
      systemLog("Error removing tmp file for %@", path);
      return false;
    }
    movedItems_.noteRemoval(path);
    localusedbytes_ -= status->st_size;
    if (discHasItem(path)) hideArray.append(path);
    postSizeChanged();
    return true;
  }
  if (!discHasItem(path)) {
    systemLog("Error removing item %@. Nowhere to be found.", path);
    return false;
  }
  hideArray.append(path);
  return true;
}

}  // namespace kelvane
