// SPDX-License-Identifier: GPL-2.0-or-later
// Requests on files: open, create, read, write and the like.
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <vector>

#include "platform/userfs/volume.h"

namespace kelvane::userfs {
namespace {

OpenFile* fileOf(const fuse_file_info* info) {
  return reinterpret_cast<OpenFile*>(static_cast<uintptr_t>(info->fh));
}

// The kernel keeps a file's pages from one opening to the next, and need not say when it is closed.
void describe(OpenFile* file, fuse_file_info* info) {
  info->fh = reinterpret_cast<uintptr_t>(file);
  info->keep_cache = 1;
  info->noflush = 1;
}

}  // namespace

void Volume::open(fuse_req_t request, fuse_ino_t number, fuse_file_info* info) {
  Node* const node = nodes_.nodeOf(number);
  std::unique_ptr<UserData> userData;
  if (const int code = openNode(node, info->flags, &userData)) {
    fuse_reply_err(request, code);
    return;
  }
  OpenFile* const file = makeOpenFile(node, std::move(userData));
  describe(file, info);
  if (fuse_reply_open(request, info) != 0) closeOpenFile(file);
}

void Volume::create(fuse_req_t request, fuse_ino_t parentNumber, const char* name, mode_t mode,
                    fuse_file_info* info) {
  Node* const parent = nodes_.nodeOf(parentNumber);
  std::unique_ptr<UserData> userData;
  const std::string path = nodes_.pathOf(parent, name);
  int code = checkFree(parent, name);
  if (code == EEXIST && (info->flags & O_EXCL) == 0) {
    code = openNode(nodeFor(parent, name, *itemAt(path)), info->flags, &userData);
  } else if (code == 0) {
    code = createAt(parent, path, mode, &userData);
  }
  const auto item = code == 0 ? itemAt(path) : std::nullopt;
  if (!item.has_value()) {
    if (userData != nullptr) delegate_->releaseFileAtPath(path, std::move(userData));
    fuse_reply_err(request, code == 0 ? EIO : code);
    return;
  }
  Node* const node = nodeFor(parent, name, *item);
  OpenFile* const file = makeOpenFile(node, std::move(userData));
  const fuse_entry_param entry = entryFor(node, *item);
  describe(file, info);
  nodes_.retain(node);
  if (fuse_reply_create(request, &entry, info) == 0) return;
  nodes_.forget(node, 1);
  closeOpenFile(file);
}

void Volume::mknod(fuse_req_t request, fuse_ino_t parentNumber, const char* name, mode_t mode) {
  Node* const parent = nodes_.nodeOf(parentNumber);
  const std::string path = nodes_.pathOf(parent, name);
  std::unique_ptr<UserData> userData;
  int code = S_ISREG(mode) ? checkFree(parent, name) : EPERM;
  if (code == 0) code = createAt(parent, path, mode, &userData);
  if (code != 0) {
    fuse_reply_err(request, code);
    return;
  }
  delegate_->releaseFileAtPath(path, std::move(userData));
  replyItemAt(request, parent, name);
}

void Volume::read(fuse_req_t request, size_t size, off_t offset, fuse_file_info* info) {
  OpenFile* const file = fileOf(info);
  refresh(file);
  const int descriptor = file->userData->fileDescriptor();
  if (descriptor >= 0) {
    // Straight from the file: what is not there is not read, and nothing is copied here.
    fuse_bufvec source = FUSE_BUFVEC_INIT(size);
    source.buf[0].flags = static_cast<fuse_buf_flags>(FUSE_BUF_IS_FD | FUSE_BUF_FD_SEEK);
    source.buf[0].fd = descriptor;
    source.buf[0].pos = offset;
    fuse_reply_data(request, &source, FUSE_BUF_SPLICE_MOVE);
    return;
  }
  const std::string path = nodes_.pathOf(file->node);
  const auto item = itemOf(file->node);
  const off_t length = item.has_value() ? item->status.st_size : 0;
  const off_t left = std::max<off_t>(length - offset, 0);
  std::vector<char> buffer(std::min(size, static_cast<size_t>(left)));
  PosixError error;
  const int32_t count = delegate_->readFileAtPath(path, file->userData.get(), buffer.data(),
                                                  buffer.size(), offset, &error);
  if (error.isSet() || count < 0) {
    fuse_reply_err(request, numberOf(error, EIO));
  } else {
    fuse_reply_buf(request, buffer.data(), std::min(buffer.size(), static_cast<size_t>(count)));
  }
}

void Volume::write(fuse_req_t request, const char* buffer, size_t size, off_t offset,
                   fuse_file_info* info) {
  OpenFile* const file = fileOf(info);
  refresh(file);
  if (!file->userData->isWritable()) {
    fuse_reply_err(request, EROFS);
    return;
  }
  PosixError error;
  const int32_t count = delegate_->writeFileAtPath(nodes_.pathOf(file->node), file->userData.get(),
                                                   buffer, size, offset, &error);
  if (error.isSet() || (count <= 0 && size > 0)) {
    fuse_reply_err(request, numberOf(error, EIO));
  } else {
    fuse_reply_write(request, static_cast<size_t>(count));
  }
}

void Volume::release(fuse_req_t request, fuse_file_info* info) {
  closeOpenFile(fileOf(info));
  fuse_reply_err(request, 0);
}

void Volume::fsync(fuse_req_t request, int onlyData, fuse_file_info* info) {
  const OpenFile* const file = fileOf(info);
  const int descriptor = file->userData->fileDescriptor();
  int status = 0;
  if (descriptor >= 0 && file->userData->isWritable()) {
    status = onlyData != 0 ? ::fdatasync(descriptor) : ::fsync(descriptor);
  }
  fuse_reply_err(request, status == 0 ? 0 : errno);
}

void Volume::fallocate(fuse_req_t request, int mode, off_t offset, off_t length,
                       fuse_file_info* info) {
  OpenFile* const file = fileOf(info);
  refresh(file);
  const int descriptor = file->userData->fileDescriptor();
  if (!file->userData->isWritable() || descriptor < 0) {
    fuse_reply_err(request, file->userData->isWritable() ? EOPNOTSUPP : EROFS);
    return;
  }
  fuse_reply_err(request, ::fallocate(descriptor, mode, offset, length) == 0 ? 0 : errno);
}

void Volume::lseek(fuse_req_t request, off_t offset, int whence, fuse_file_info* info) {
  OpenFile* const file = fileOf(info);
  refresh(file);
  const int descriptor = file->userData->fileDescriptor();
  if (descriptor < 0) {
    fuse_reply_err(request, ENOSYS);
    return;
  }
  const off_t found = ::lseek(descriptor, offset, whence);
  if (found < 0) {
    fuse_reply_err(request, errno);
  } else {
    fuse_reply_lseek(request, found);
  }
}

}  // namespace kelvane::userfs
