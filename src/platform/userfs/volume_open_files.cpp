// SPDX-License-Identifier: GPL-2.0-or-later
// What an open file is, and how it follows its item.
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "platform/userfs/volume.h"

namespace kelvane::userfs {
namespace {

bool isForWriting(int flags) {
  return (flags & O_ACCMODE) != O_RDONLY;
}

// Whether a program opens a file only to write it anew, and may empty it after the open: so do
// editors, which keep the old bytes until they know that they can write. Who reads too, or adds at
// the end, changes the file where it stands.
bool mayReplaceContent(int flags) {
  return (flags & O_ACCMODE) == O_WRONLY && (flags & O_APPEND) == 0;
}

/// Another descriptor of an open file, for reading.
class SecondDescriptor final : public UserData {
 public:
  explicit SecondDescriptor(int original) : descriptor_(fcntl(original, F_DUPFD_CLOEXEC, 0)) {}
  ~SecondDescriptor() override {
    if (descriptor_ >= 0) close(descriptor_);
  }
  SecondDescriptor(const SecondDescriptor&) = delete;
  SecondDescriptor& operator=(const SecondDescriptor&) = delete;

  int fileDescriptor() const override { return descriptor_; }
  bool isWritable() const override { return false; }

 private:
  int descriptor_;
};

}  // namespace

// Opens the node's item with open(2) flags.
int Volume::openNode(Node* node, int flags, std::unique_ptr<UserData>* userData) {
  if (!nodes_.isLinked(node)) return openReplaced(*node, flags, userData);
  const std::string path = nodes_.pathOf(node);
  const auto item = itemAt(path);
  if (!item.has_value()) return numberOf({}, ENOENT);
  const bool truncates = (flags & O_TRUNC) != 0;
  if (item->isReadOnly() && truncates) return emptyReadOnlyFile(node, *item, userData);
  if (item->isReadOnly() && isForWriting(flags) && !mayReplaceContent(flags)) return EROFS;
  if (truncates) {
    AttributeChanges empty;
    empty.NSFileSize = 0;
    if (const int code = applyAttributes(path, empty)) return code == EPERM ? EACCES : code;
  }
  PosixError error;
  if (!delegate_->openFileAtPath(path, flags & O_ACCMODE, userData, &error) ||
      *userData == nullptr) {
    return numberOf(error, EACCES);
  }
  if (!isForWriting(flags) || item->isReadOnly() || (*userData)->isWritable()) return 0;
  delegate_->releaseFileAtPath(path, std::move(*userData));
  return EACCES;
}

// Opens an item that lost its name between a program's lookup and its open. A reader gets the old
// item, so that a file which others replace again and again is there at every moment. Everybody
// else gets ESTALE, upon which the kernel looks the name up again.
int Volume::openReplaced(const Node& node, int flags, std::unique_ptr<UserData>* userData) {
  if (isForWriting(flags) || (flags & O_TRUNC) != 0) return ESTALE;
  for (const OpenFile* file = node.openFiles; file != nullptr; file = file->next) {
    const int original = file->userData->fileDescriptor();
    if (original < 0) continue;
    *userData = std::make_unique<SecondDescriptor>(original);
    if ((*userData)->fileDescriptor() >= 0) return 0;
    userData->reset();
  }
  return ESTALE;
}

// Opens the file that a rename is going to replace, if the kernel knows it. Null where there is
// none.
OpenFile* Volume::keepReplaced(const Move& move) {
  Node* const node = nodes_.find(move.newParent, move.newName);
  if (node == nullptr || !move.target.has_value() || !S_ISREG(move.target->status.st_mode)) {
    return nullptr;
  }
  std::unique_ptr<UserData> userData;
  if (!delegate_->openFileAtPath(move.to, O_RDONLY, &userData, nullptr) || userData == nullptr) {
    return nullptr;
  }
  OpenFile* const keeper = makeOpenFile(node, std::move(userData));
  keeper->isKeeper = true;
  return keeper;
}

int Volume::createAt(Node* parent, const std::string& path, mode_t permissions,
                     std::unique_ptr<UserData>* userData) {
  AttributeChanges attributes;
  attributes.NSFilePosixPermissions = permissions & 07777;
  itemsMayAppear();
  PosixError error;
  if (!delegate_->createFileAtPath(path, attributes, userData, &error) || *userData == nullptr) {
    return numberOf(error, EIO);
  }
  parentsBecameWritable(parent);
  return 0;
}

// A new, empty file takes the place of one that can only be read. The node stays the same item, so
// files that are open on it follow.
int Volume::emptyReadOnlyFile(Node* node, const Item& item, std::unique_ptr<UserData>* userData) {
  const int code = createAt(node->parent, nodes_.pathOf(node), item.status.st_mode, userData);
  if (code != 0) return code;
  contentMayHaveMoved();
  // At once: the item may lose its name before these are used again.
  for (OpenFile* file = node->openFiles; file != nullptr; file = file->next) refresh(file);
  return 0;
}

OpenFile* Volume::makeOpenFile(Node* node, std::unique_ptr<UserData> userData) {
  auto* file = new OpenFile{node, std::move(userData), contentEpoch_, node->openFiles, false};
  node->openFiles = file;
  openFiles_.insert(file);
  return file;
}

void Volume::closeOpenFile(OpenFile* file) {
  OpenFile** link = &file->node->openFiles;
  while (*link != file) link = &(*link)->next;
  *link = file->next;
  openFiles_.erase(file);
  delegate_->releaseFileAtPath(nodes_.pathOf(file->node), std::move(file->userData));
  nodes_.dropIfUnused(file->node);
  delete file;
}

// A file that was opened where it can only be read may have become a writable one since, by
// truncation or by a move. All files open on one item must read the same bytes: the kernel keeps
// them in one place.
void Volume::refresh(OpenFile* file) {
  if (file->contentEpoch == contentEpoch_) return;
  file->contentEpoch = contentEpoch_;
  if (file->userData->isWritable() || !nodes_.isLinked(file->node)) return;
  const std::string path = nodes_.pathOf(file->node);
  const auto item = itemAt(path);
  if (!item.has_value() || item->isReadOnly()) return;
  std::unique_ptr<UserData> current;
  if (!delegate_->openFileAtPath(path, O_RDWR, &current, nullptr) || current == nullptr) return;
  std::swap(file->userData, current);
  delegate_->releaseFileAtPath(path, std::move(current));
}

}  // namespace kelvane::userfs
