// SPDX-License-Identifier: GPL-2.0-or-later
// What an open file is, and how it follows its item.
#include <fcntl.h>

#include <cerrno>

#include "platform/userfs/volume.h"

namespace kelvane::userfs {
namespace {

bool isForWriting(int flags) {
  return (flags & O_ACCMODE) != O_RDONLY;
}

}  // namespace

// Opens the node's item with open(2) flags.
int Volume::openNode(Node* node, int flags, std::unique_ptr<UserData>* userData) {
  const std::string path = nodes_.pathOf(node);
  const auto item = nodes_.isLinked(node) ? itemAt(path) : std::nullopt;
  if (!item.has_value()) return ENOENT;
  const bool truncates = (flags & O_TRUNC) != 0;
  if (item->isReadOnly() && truncates) return emptyReadOnlyFile(node, *item, userData);
  if (item->isReadOnly() && isForWriting(flags)) return EROFS;
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
  if (!isForWriting(flags) || (*userData)->isWritable()) return 0;
  delegate_->releaseFileAtPath(path, std::move(*userData));
  return EACCES;
}

int Volume::createAt(Node* parent, const std::string& path, mode_t permissions,
                     std::unique_ptr<UserData>* userData) {
  AttributeChanges attributes;
  attributes.NSFilePosixPermissions = permissions & 07777;
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
  if (code == 0) contentMayHaveMoved();
  return code;
}

OpenFile* Volume::makeOpenFile(Node* node, std::unique_ptr<UserData> userData) {
  auto* file = new OpenFile{node, std::move(userData), contentEpoch_, node->openFiles};
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
