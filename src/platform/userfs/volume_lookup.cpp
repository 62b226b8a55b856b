// SPDX-License-Identifier: GPL-2.0-or-later
// Names and attributes of items.
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>

#include "platform/userfs/volume.h"

namespace kelvane::userfs {
namespace {

// The delegate puts the path of a folder before ours.
constexpr size_t kLongestPath = PATH_MAX - 256;

// Inode numbers of items without attributes, beyond those of file systems.
constexpr uint64_t kNamelessInodes = uint64_t{1} << 62;

// What stands beneath and what is writable come from two file systems, whose numbers may coincide.
uint64_t inodeNumberFor(const Item& item) {
  return (static_cast<uint64_t>(item.status.st_ino) << 1) | (item.isReadOnly() ? 1U : 0U);
}

size_t depthOf(const std::string& path) {
  return static_cast<size_t>(std::count(path.begin(), path.end(), '/'));
}

}  // namespace

std::optional<Item> Volume::itemAt(const std::string& path) {
  PosixError error;
  const auto attributes = delegate_->attributesOfItemAtPath(path, nullptr, &error);
  if (!attributes.has_value()) return std::nullopt;
  if (attributes->isEmpty()) return namelessItemAt(path);
  Item item{*attributes->status, attributes->origin};
  if (item.isDirectory()) {
    // Of the merged directory nobody knows how many directories it holds; 1 says so to programs.
    item.status.st_nlink = 1;
  } else if (item.isLink()) {
    const auto text = delegate_->destinationOfSymbolicLinkAtPath(path, nullptr);
    item.status.st_size = static_cast<off_t>(text.value_or(std::string()).size());
  }
  return item;
}

// An item that the delegate only says exists.
std::optional<Item> Volume::namelessItemAt(const std::string& path) {
  constexpr size_t kAlwaysThereDepth = 2;
  const size_t slash = path.rfind('/');
  Item item;
  item.status.st_mode = S_IFDIR | 0777;
  if (depthOf(path) > kAlwaysThereDepth) {
    const auto names = delegate_->contentsOfDirectoryAtPath(path.substr(0, slash), nullptr);
    if (std::find(names.begin(), names.end(), path.substr(slash + 1)) == names.end()) {
      return std::nullopt;
    }
    std::unique_ptr<UserData> userData;
    if (delegate_->openFileAtPath(path, O_RDONLY, &userData, nullptr)) {
      if (fstat(userData->fileDescriptor(), &item.status) != 0)
        item.status.st_mode = S_IFREG | 0666;
      delegate_->releaseFileAtPath(path, std::move(userData));
      return item;
    }
  }
  item.status.st_ino = (kNamelessInodes | ++lastNamelessInode_);
  item.status.st_nlink = 1;
  item.status.st_uid = geteuid();
  item.status.st_gid = getegid();
  item.status.st_atim = item.status.st_mtim = item.status.st_ctim = mountTime_;
  return item;
}

// The item of a node; one without a place, or whose item has gone, is asked through its open files.
std::optional<Item> Volume::itemOf(Node* node) {
  if (nodes_.isLinked(node)) {
    if (auto item = itemAt(nodes_.pathOf(node))) return item;
  }
  for (const OpenFile* file = node->openFiles; file != nullptr; file = file->next) {
    Item item;
    const int descriptor = file->userData->fileDescriptor();
    if (descriptor < 0 || fstat(descriptor, &item.status) != 0) continue;
    item.status.st_nlink = 0;
    return item;
  }
  return std::nullopt;
}

// The kernel looks a name up before it asks for something new of that name. What it was told then
// need not be found out again.
std::optional<Item> Volume::itemAtUnlessKnownMissing(const std::string& path) {
  return path == missingPath_ ? std::nullopt : itemAt(path);
}

int Volume::checkName(const Node* parent, std::string_view name) const {
  if (name.size() > NAME_MAX) return ENAMETOOLONG;
  if (!nodes_.isLinked(parent)) return ENOENT;
  return isTooLong(nodes_.pathOf(parent, name)) ? ENAMETOOLONG : 0;
}

bool Volume::isTooLong(const std::string& path) {
  return path.size() > kLongestPath || path.size() - path.rfind('/') - 1 > NAME_MAX;
}

// Whether an item can be made there.
int Volume::checkFree(const Node* parent, const char* name) {
  if (const int code = checkName(parent, name)) return code;
  return itemAtUnlessKnownMissing(nodes_.pathOf(parent, name)).has_value() ? EEXIST : 0;
}

Node* Volume::nodeFor(Node* parent, std::string_view name, const Item& item) {
  Node* node = nodes_.find(parent, name);
  const mode_t type = item.status.st_mode & S_IFMT;
  // Another kind of item than the kernel knows there needs another number.
  if (node != nullptr && node->type != 0 && node->type != type) {
    nodes_.detach(node);
    node = nullptr;
  }
  if (node == nullptr) node = nodes_.make(parent, name);
  node->type = type;
  return node;
}

// What the kernel is told of an item. Its number stays, so that programs know it again.
void Volume::show(Node* node, const Item& item, struct stat* shown) {
  *shown = item.status;
  if (node->inodeNumber == 0) node->inodeNumber = inodeNumberFor(item);
  shown->st_ino = node->inodeNumber;
  if (node == nodes_.root()) {
    const mode_t type = shown->st_mode & S_IFMT;
    shown->st_mode = type | shownOfRoot_.NSFilePosixPermissions.value_or(shown->st_mode & 07777);
    shown->st_uid = shownOfRoot_.NSFileOwnerAccountID.value_or(shown->st_uid);
    shown->st_gid = shownOfRoot_.NSFileGroupOwnerAccountID.value_or(shown->st_gid);
  }
  node->shownOrigin = item.origin;
}

fuse_entry_param Volume::entryFor(Node* node, const Item& item) {
  fuse_entry_param entry = {};
  entry.ino = nodes_.numberOf(node);
  entry.attr_timeout = KernelCaches::kLifetime;
  entry.entry_timeout = KernelCaches::kLifetime;
  show(node, item, &entry.attr);
  return entry;
}

void Volume::replyEntry(fuse_req_t request, Node* parent, const char* name, const Item& item) {
  Node* const node = nodeFor(parent, name, item);
  const fuse_entry_param entry = entryFor(node, item);
  nodes_.retain(node);
  if (fuse_reply_entry(request, &entry) != 0) nodes_.forget(node, 1);
}

// Answers the making of an item with what is there now.
void Volume::replyItemAt(fuse_req_t request, Node* parent, const char* name) {
  if (const auto item = itemAt(nodes_.pathOf(parent, name))) {
    replyEntry(request, parent, name, *item);
  } else {
    fuse_reply_err(request, EIO);
  }
}

void Volume::lookup(fuse_req_t request, fuse_ino_t parentNumber, const char* name) {
  Node* const parent = nodes_.nodeOf(parentNumber);
  if (const int code = checkName(parent, name)) {
    fuse_reply_err(request, code);
    return;
  }
  std::string path = nodes_.pathOf(parent, name);
  if (const auto item = itemAt(path)) {
    replyEntry(request, parent, name, *item);
    return;
  }
  if (const int code = failureBelow()) {
    fuse_reply_err(request, code);
    return;
  }
  missingPath_ = std::move(path);
  if (Node* const gone = nodes_.find(parent, name)) nodes_.detach(gone);
  if (missingNameLifetime_ <= 0) {
    fuse_reply_err(request, ENOENT);
    return;
  }
  fuse_entry_param nothing = {};
  nothing.entry_timeout = missingNameLifetime_;
  fuse_reply_entry(request, &nothing);
}

void Volume::forget(fuse_ino_t number, uint64_t count) {
  if (number == FUSE_ROOT_ID) return;
  Node* const node = nodes_.nodeOf(number);
  if (count >= node->lookupCount && node->openFiles != nullptr && node->openFiles->isKeeper) {
    closeOpenFile(node->openFiles);
  }
  nodes_.forget(node, count);
}

void Volume::getattr(fuse_req_t request, fuse_ino_t number) {
  Node* const node = nodes_.nodeOf(number);
  const auto item = itemOf(node);
  if (!item.has_value()) {
    // For a name that another item has taken, the kernel looks again upon ESTALE.
    fuse_reply_err(request, numberOf({}, nodes_.isLinked(node) ? ENOENT : ESTALE));
    return;
  }
  struct stat shown = {};
  show(node, *item, &shown);
  fuse_reply_attr(request, &shown, KernelCaches::kLifetime);
}

}  // namespace kelvane::userfs
