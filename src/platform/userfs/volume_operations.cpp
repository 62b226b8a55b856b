// SPDX-License-Identifier: GPL-2.0-or-later
// The table through which libfuse calls a Volume.
#include <cerrno>

#include "platform/userfs/volume.h"

namespace kelvane::userfs {
namespace {

Volume& volumeOf(fuse_req_t request) {
  return *static_cast<Volume*>(fuse_req_userdata(request));
}

void forgetMany(fuse_req_t request, size_t count, fuse_forget_data* forgets) {
  for (size_t index = 0; index < count; ++index) {
    volumeOf(request).forget(forgets[index].ino, forgets[index].nlookup);
  }
  fuse_reply_none(request);
}

void forgetOne(fuse_req_t request, fuse_ino_t number, uint64_t count) {
  volumeOf(request).forget(number, count);
  fuse_reply_none(request);
}

void refuseLink(fuse_req_t request, fuse_ino_t /*number*/, fuse_ino_t /*newParent*/,
                const char* /*newName*/) {
  fuse_reply_err(request, EPERM);
}

void syncDirectory(fuse_req_t request, fuse_ino_t /*number*/, int /*onlyData*/,
                   fuse_file_info* /*info*/) {
  fuse_reply_err(request, 0);
}

void addNames(fuse_lowlevel_ops& table) {
  table.lookup = [](fuse_req_t request, fuse_ino_t parent, const char* name) {
    volumeOf(request).lookup(request, parent, name);
  };
  table.forget = forgetOne;
  table.forget_multi = forgetMany;
  table.mkdir = [](fuse_req_t request, fuse_ino_t parent, const char* name, mode_t mode) {
    volumeOf(request).mkdir(request, parent, name, mode);
  };
  table.rmdir = [](fuse_req_t request, fuse_ino_t parent, const char* name) {
    volumeOf(request).rmdir(request, parent, name);
  };
  table.unlink = [](fuse_req_t request, fuse_ino_t parent, const char* name) {
    volumeOf(request).unlink(request, parent, name);
  };
  table.rename = [](fuse_req_t request, fuse_ino_t parent, const char* name, fuse_ino_t newParent,
                    const char* newName, unsigned flags) {
    volumeOf(request).rename(request, parent, name, newParent, newName, flags);
  };
  table.symlink = [](fuse_req_t request, const char* text, fuse_ino_t parent, const char* name) {
    volumeOf(request).symlink(request, text, parent, name);
  };
  table.mknod = [](fuse_req_t request, fuse_ino_t parent, const char* name, mode_t mode,
                   dev_t /*device*/) { volumeOf(request).mknod(request, parent, name, mode); };
  table.link = refuseLink;
}

void addAttributes(fuse_lowlevel_ops& table) {
  table.getattr = [](fuse_req_t request, fuse_ino_t number, fuse_file_info* /*info*/) {
    volumeOf(request).getattr(request, number);
  };
  table.setattr = [](fuse_req_t request, fuse_ino_t number, struct stat* wanted, int which,
                     fuse_file_info* /*info*/) {
    volumeOf(request).setattr(request, number, *wanted, which);
  };
  table.readlink = [](fuse_req_t request, fuse_ino_t number) {
    volumeOf(request).readlink(request, number);
  };
  table.statfs = [](fuse_req_t request, fuse_ino_t /*number*/) {
    volumeOf(request).statfs(request);
  };
  table.setxattr = [](fuse_req_t request, fuse_ino_t number, const char* name, const char* value,
                      size_t size, int flags) {
    volumeOf(request).setxattr(request, number, name, value, size, flags);
  };
  table.getxattr = [](fuse_req_t request, fuse_ino_t number, const char* name, size_t size) {
    volumeOf(request).getxattr(request, number, name, size);
  };
  table.listxattr = [](fuse_req_t request, fuse_ino_t number, size_t size) {
    volumeOf(request).listxattr(request, number, size);
  };
  table.removexattr = [](fuse_req_t request, fuse_ino_t number, const char* name) {
    volumeOf(request).removexattr(request, number, name);
  };
}

void addFiles(fuse_lowlevel_ops& table) {
  table.open = [](fuse_req_t request, fuse_ino_t number, fuse_file_info* info) {
    volumeOf(request).open(request, number, info);
  };
  table.create = [](fuse_req_t request, fuse_ino_t parent, const char* name, mode_t mode,
                    fuse_file_info* info) {
    volumeOf(request).create(request, parent, name, mode, info);
  };
  table.read = [](fuse_req_t request, fuse_ino_t /*number*/, size_t size, off_t offset,
                  fuse_file_info* info) { volumeOf(request).read(request, size, offset, info); };
  table.write = [](fuse_req_t request, fuse_ino_t /*number*/, const char* buffer, size_t size,
                   off_t offset, fuse_file_info* info) {
    volumeOf(request).write(request, buffer, size, offset, info);
  };
  table.release = [](fuse_req_t request, fuse_ino_t /*number*/, fuse_file_info* info) {
    volumeOf(request).release(request, info);
  };
  table.fsync = [](fuse_req_t request, fuse_ino_t /*number*/, int onlyData, fuse_file_info* info) {
    volumeOf(request).fsync(request, onlyData, info);
  };
  table.fallocate = [](fuse_req_t request, fuse_ino_t /*number*/, int mode, off_t offset,
                       off_t length, fuse_file_info* info) {
    volumeOf(request).fallocate(request, mode, offset, length, info);
  };
  table.lseek = [](fuse_req_t request, fuse_ino_t /*number*/, off_t offset, int whence,
                   fuse_file_info* info) {
    volumeOf(request).lseek(request, offset, whence, info);
  };
}

void addDirectories(fuse_lowlevel_ops& table) {
  table.opendir = [](fuse_req_t request, fuse_ino_t number, fuse_file_info* info) {
    volumeOf(request).opendir(request, number, info);
  };
  table.readdirplus = [](fuse_req_t request, fuse_ino_t /*number*/, size_t size, off_t offset,
                         fuse_file_info* info) {
    volumeOf(request).readdirplus(request, size, offset, info);
  };
  table.releasedir = [](fuse_req_t request, fuse_ino_t /*number*/, fuse_file_info* info) {
    volumeOf(request).releasedir(request, info);
  };
  table.fsyncdir = syncDirectory;
}

fuse_lowlevel_ops makeTable() {
  fuse_lowlevel_ops table = {};
  table.init = [](void* volume, fuse_conn_info* connection) {
    static_cast<Volume*>(volume)->init(connection);
  };
  addNames(table);
  addAttributes(table);
  addFiles(table);
  addDirectories(table);
  return table;
}

}  // namespace

const fuse_lowlevel_ops& Volume::operations() {
  static const fuse_lowlevel_ops table = makeTable();
  return table;
}

}  // namespace kelvane::userfs
