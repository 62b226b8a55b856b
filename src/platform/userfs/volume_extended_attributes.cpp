// SPDX-License-Identifier: GPL-2.0-or-later
// Extended attributes. The kernel remembers an ENOSYS and does not ask again.
#include <cerrno>

#include "platform/userfs/volume.h"

namespace kelvane::userfs {
namespace {

// Answers with the value, or with its length where the program asks for that.
void replyValue(fuse_req_t request, const std::string& value, size_t size) {
  if (size == 0) {
    fuse_reply_xattr(request, value.size());
  } else if (value.size() > size) {
    fuse_reply_err(request, ERANGE);
  } else {
    fuse_reply_buf(request, value.data(), value.size());
  }
}

}  // namespace

void Volume::setxattr(fuse_req_t request, fuse_ino_t number, const char* name, const char* value,
                      size_t size, int flags) {
  PosixError error;
  const std::string path = nodes_.pathOf(nodes_.nodeOf(number));
  const bool done =
      delegate_->setExtendedAttribute(name, path, std::string(value, size), 0, flags, &error);
  fuse_reply_err(request, done && !error.isSet() ? 0 : numberOf(error, EIO));
}

void Volume::getxattr(fuse_req_t request, fuse_ino_t number, const char* name, size_t size) {
  PosixError error;
  const std::string path = nodes_.pathOf(nodes_.nodeOf(number));
  const auto value = delegate_->valueOfExtendedAttribute(name, path, 0, &error);
  if (value.has_value()) {
    replyValue(request, *value, size);
  } else {
    fuse_reply_err(request, numberOf(error, ENODATA));
  }
}

void Volume::listxattr(fuse_req_t request, fuse_ino_t number, size_t size) {
  PosixError error;
  const std::string path = nodes_.pathOf(nodes_.nodeOf(number));
  const auto names = delegate_->extendedAttributesOfItemAtPath(path, &error);
  if (!names.has_value()) {
    fuse_reply_err(request, numberOf(error, EIO));
    return;
  }
  std::string list;
  for (const std::string& name : *names) list.append(name).append(1, '\0');
  replyValue(request, list, size);
}

void Volume::removexattr(fuse_req_t request, fuse_ino_t number, const char* name) {
  PosixError error;
  const std::string path = nodes_.pathOf(nodes_.nodeOf(number));
  const bool done = delegate_->removeExtendedAttribute(name, path, &error);
  fuse_reply_err(request, done && !error.isSet() ? 0 : numberOf(error, EIO));
}

}  // namespace kelvane::userfs
