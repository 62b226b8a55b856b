// SPDX-License-Identifier: GPL-2.0-or-later
// Requests on directories.
#include <cerrno>
#include <vector>

#include "platform/userfs/volume.h"

namespace kelvane::userfs {
namespace {

// The entries "." and ".." stand before the names.
constexpr size_t kDots = 2;

// What a listing says of an item whose number nobody has asked for (FUSE_UNKNOWN_INO).
constexpr ino_t kUnknownInode = 0xffffffff;

OpenDirectory* directoryOf(const fuse_file_info* info) {
  return reinterpret_cast<OpenDirectory*>(static_cast<uintptr_t>(info->fh));
}

}  // namespace

void Volume::opendir(fuse_req_t request, fuse_ino_t number, fuse_file_info* info) {
  Node* const node = nodes_.nodeOf(number);
  auto* directory = new OpenDirectory{node, {}};
  openDirectories_.insert(directory);
  info->fh = reinterpret_cast<uintptr_t>(directory);
  info->keep_cache = 1;
  info->cache_readdir = 1;
  if (fuse_reply_open(request, info) == 0) return;
  openDirectories_.erase(directory);
  delete directory;
}

void Volume::takeNames(OpenDirectory* directory) {
  directory->names.clear();
  if (!nodes_.isLinked(directory->node)) return;
  directory->names = delegate_->contentsOfDirectoryAtPath(nodes_.pathOf(directory->node), nullptr);
}

// Adds "." or "..". Returns its length, or more than `size` where it does not fit.
size_t Volume::addDot(fuse_req_t request, char* buffer, size_t size, size_t index) {
  fuse_entry_param entry = {};
  entry.attr.st_ino = kUnknownInode;
  entry.attr.st_mode = S_IFDIR;
  return fuse_add_direntry_plus(request, buffer, size, index == 0 ? "." : "..", &entry,
                                static_cast<off_t>(index + 1));
}

// Adds the entry of that index with all that a lookup would say, and as which it counts. `path` is
// the directory's, with a slash at its end. Returns like `addDot`; 0 where there is no such item
// any more.
size_t Volume::addEntry(fuse_req_t request, char* buffer, size_t size, OpenDirectory& directory,
                        const std::string& path, size_t index) {
  const std::string& name = directory.names[index - kDots];
  const size_t needed = fuse_add_direntry_plus(request, nullptr, 0, name.c_str(), nullptr, 0);
  if (needed > size) return needed;
  const std::string itemPath = path + name;
  if (isTooLong(itemPath)) return 0;
  const auto item = itemAt(itemPath);
  if (!item.has_value()) return 0;
  Node* const node = nodeFor(directory.node, name, *item);
  const fuse_entry_param entry = entryFor(node, *item);
  nodes_.retain(node);
  return fuse_add_direntry_plus(request, buffer, size, name.c_str(), &entry,
                                static_cast<off_t>(index + 1));
}

// The only way in which the kernel reads directories here: programs that list one mostly ask for
// the attributes next, and one request then serves a page of items.
void Volume::readdirplus(fuse_req_t request, size_t size, off_t offset, fuse_file_info* info) {
  OpenDirectory* const directory = directoryOf(info);
  if (offset == 0) takeNames(directory);
  if (const int code = failureBelow()) {
    fuse_reply_err(request, code);
    return;
  }
  const std::string path = nodes_.pathOf(directory->node, "");
  const size_t end = nodes_.isLinked(directory->node) ? directory->names.size() + kDots : kDots;
  std::vector<char> buffer(size);
  size_t used = 0;
  for (auto index = static_cast<size_t>(offset); index < end; ++index) {
    char* const place = buffer.data() + used;
    const size_t length = index < kDots
                              ? addDot(request, place, size - used, index)
                              : addEntry(request, place, size - used, *directory, path, index);
    if (length > size - used) break;
    used += length;
  }
  fuse_reply_buf(request, buffer.data(), used);
}

void Volume::releasedir(fuse_req_t request, fuse_file_info* info) {
  OpenDirectory* const directory = directoryOf(info);
  openDirectories_.erase(directory);
  delete directory;
  fuse_reply_err(request, 0);
}

void Volume::mkdir(fuse_req_t request, fuse_ino_t parentNumber, const char* name, mode_t mode) {
  Node* const parent = nodes_.nodeOf(parentNumber);
  int code = checkFree(parent, name);
  if (code == 0) {
    AttributeChanges attributes;
    attributes.NSFilePosixPermissions = mode & 07777;
    PosixError error;
    const std::string path = nodes_.pathOf(parent, name);
    itemsMayAppear();
    const bool made = delegate_->createDirectoryAtPath(path, attributes, &error);
    if (!made || error.isSet()) code = numberOf(error, EIO);
  }
  if (code != 0) {
    fuse_reply_err(request, code);
    return;
  }
  parentsBecameWritable(parent);
  replyItemAt(request, parent, name);
}

// The delegate removes a directory with its contents: that must be an empty one. One that cannot be
// read is none.
int Volume::checkEmpty(const std::string& path) {
  return delegate_->contentsOfDirectoryAtPath(path, nullptr).empty() ? failureBelow() : ENOTEMPTY;
}

int Volume::removeDirectoryAt(const std::string& path) {
  const auto item = itemAt(path);
  if (!item.has_value()) return ENOENT;
  if (!item->isDirectory()) return ENOTDIR;
  if (const int code = checkEmpty(path)) return code;
  return removeAt(path);
}

void Volume::rmdir(fuse_req_t request, fuse_ino_t parentNumber, const char* name) {
  Node* const parent = nodes_.nodeOf(parentNumber);
  int code = checkName(parent, name);
  if (code == 0) code = removeDirectoryAt(nodes_.pathOf(parent, name));
  Node* const node = nodes_.find(parent, name);
  if (code == 0 && node != nullptr) nodes_.detach(node);
  fuse_reply_err(request, code);
}

}  // namespace kelvane::userfs
