// SPDX-License-Identifier: GPL-2.0-or-later
// Symbolic links, and removal of names.
#include <cerrno>

#include "platform/userfs/volume.h"

namespace kelvane::userfs {

// Makes a link that is seen, where no item is seen now.
int Volume::createVisibleLink(const std::string& path, const std::string& text) {
  itemsMayAppear();
  // Of the operations that make something, this one alone makes no directories above it.
  const std::string above = path.substr(0, path.rfind('/'));
  if (!above.empty()) delegate_->createDirectoryAtPath(above, {}, nullptr);
  PosixError error;
  if (!delegate_->createSymbolicLinkAtPath(path, text, &error) || error.isSet()) {
    return numberOf(error, text.size() > PATH_MAX - 256 ? ENAMETOOLONG : EIO);
  }
  if (itemAt(path).has_value()) return 0;
  // An item of that path was removed before, and the path is still hidden. To make a directory
  // there shows it again; the directory itself is not made, since the link is there.
  delegate_->createDirectoryAtPath(path, {}, nullptr);
  const auto item = itemAt(path);
  return item.has_value() && item->isLink() ? 0 : EIO;
}

void Volume::symlink(fuse_req_t request, const char* text, fuse_ino_t parentNumber,
                     const char* name) {
  Node* const parent = nodes_.nodeOf(parentNumber);
  int code = checkFree(parent, name);
  if (code == 0) code = createVisibleLink(nodes_.pathOf(parent, name), text);
  if (code != 0) {
    fuse_reply_err(request, code);
    return;
  }
  parentsBecameWritable(parent);
  replyItemAt(request, parent, name);
}

void Volume::readlink(fuse_req_t request, fuse_ino_t number) {
  const Node* const node = nodes_.nodeOf(number);
  PosixError error;
  const auto text = nodes_.isLinked(node)
                        ? delegate_->destinationOfSymbolicLinkAtPath(nodes_.pathOf(node), &error)
                        : std::nullopt;
  if (text.has_value()) {
    fuse_reply_readlink(request, text->c_str());
  } else {
    fuse_reply_err(request, numberOf(error, nodes_.isLinked(node) ? ENOENT : ESTALE));
  }
}

int Volume::removeAt(const std::string& path) {
  PosixError error;
  const bool removed = delegate_->removeItemAtPath(path, &error);
  itemWasHidden();
  return removed && !error.isSet() ? 0 : numberOf(error, EIO);
}

// `known` is what the kernel knows of that path, which need not be found out again; may be null.
int Volume::unlinkAt(const std::string& path, const Node* known) {
  mode_t type = known == nullptr ? 0 : known->type;
  if (type == 0) {
    const auto item = itemAt(path);
    if (!item.has_value()) return numberOf({}, ENOENT);
    type = item->status.st_mode & S_IFMT;
  }
  return type == S_IFDIR ? EISDIR : removeAt(path);
}

void Volume::unlink(fuse_req_t request, fuse_ino_t parentNumber, const char* name) {
  Node* const parent = nodes_.nodeOf(parentNumber);
  Node* const node = nodes_.find(parent, name);
  int code = checkName(parent, name);
  if (code == 0) code = unlinkAt(nodes_.pathOf(parent, name), node);
  if (code == 0 && node != nullptr) nodes_.detach(node);
  fuse_reply_err(request, code);
}

}  // namespace kelvane::userfs
