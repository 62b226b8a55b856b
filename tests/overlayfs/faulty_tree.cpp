// SPDX-License-Identifier: GPL-2.0-or-later
#include "overlayfs/faulty_tree.h"

#define FUSE_USE_VERSION 314
#include <dirent.h>
#include <fcntl.h>
#include <fuse.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string_view>
#include <utility>

#include "platform/userfs/mount_point.h"

namespace kelvane::tests {
namespace {

std::string realPath(const char* path) {
  return *static_cast<std::string*>(fuse_get_context()->private_data) + path;
}

bool lastNameBegins(std::string_view path, std::string_view text) {
  return path.substr(path.rfind('/') + 1).starts_with(text);
}

int getAttributes(const char* path, struct stat* status, fuse_file_info* /*info*/) {
  if (lastNameBegins(path, "lost")) return -EIO;
  return lstat(realPath(path).c_str(), status) == 0 ? 0 : -errno;
}

int listDirectory(const char* path, void* buffer, fuse_fill_dir_t fill, off_t /*offset*/,
                  fuse_file_info* /*info*/, fuse_readdir_flags /*flags*/) {
  if (lastNameBegins(path, "unlisted")) return -EIO;
  DIR* const directory = opendir(realPath(path).c_str());
  if (directory == nullptr) return -errno;
  while (const dirent* entry = readdir(directory)) {
    fill(buffer, entry->d_name, nullptr, 0, fuse_fill_dir_flags{});
  }
  closedir(directory);
  return 0;
}

int openFile(const char* path, fuse_file_info* info) {
  const int descriptor = open(realPath(path).c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor < 0) return -errno;
  info->fh = static_cast<uint64_t>(descriptor);
  return 0;
}

int readFile(const char* path, char* buffer, size_t size, off_t offset, fuse_file_info* info) {
  const off_t end = offset + static_cast<off_t>(size);
  if (lastNameBegins(path, "scratched") && end > FaultyTree::kReadableBytes) return -EIO;
  const ssize_t count = pread(static_cast<int>(info->fh), buffer, size, offset);
  return count < 0 ? -errno : static_cast<int>(count);
}

int closeFile(const char* /*path*/, fuse_file_info* info) {
  close(static_cast<int>(info->fh));
  return 0;
}

}  // namespace

FaultyTree::FaultyTree(std::string source, const std::string& mountPoint)
    : source_(std::move(source)), mountPoint_(mountPoint) {
  fuse_operations operations = {};
  operations.getattr = getAttributes;
  operations.readdir = listDirectory;
  operations.open = openFile;
  operations.read = readFile;
  operations.release = closeFile;
  fuse_args arguments = FUSE_ARGS_INIT(0, nullptr);
  fuse_opt_add_arg(&arguments, "faulty");
  fuse_opt_add_arg(&arguments, "-oro");
  fuse_ = fuse_new(&arguments, &operations, sizeof(operations), &source_);
  fuse_opt_free_args(&arguments);
  isMounted_ = fuse_ != nullptr && fuse_mount(fuse_, mountPoint.c_str()) == 0;
  if (isMounted_) thread_ = std::thread([this] { fuse_loop(fuse_); });
}

FaultyTree::~FaultyTree() {
  // The loop ends as the mount goes; its descriptor is closed only then.
  if (isMounted_) userfs::unmountPath(mountPoint_, userfs::UnmountMode::Lazily);
  if (thread_.joinable()) thread_.join();
  if (isMounted_) fuse_unmount(fuse_);
  if (fuse_ != nullptr) fuse_destroy(fuse_);
}

}  // namespace kelvane::tests
