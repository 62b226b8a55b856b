// SPDX-License-Identifier: GPL-2.0-or-later
// The content of files: open, read, write, release.
#include "overlayfs/burn_fs_delegate.h"
#include "overlayfs/local_file_handle.h"
#include "platform/foundation/system_log.h"

#include <cerrno>

namespace kelvane {
namespace {

// As the log shows no value.
constexpr char kNil[] = "(null)";

// The user data that this delegate gave out for an open file.
const LocalFileHandle& handleOf(const UserData& userData) {
  return static_cast<const LocalFileHandle&>(userData);
}

}  // namespace

bool BurnFSDelegate::openFileAtPath(const std::string& path, int /*mode*/,
                                    std::unique_ptr<UserData>* userData, PosixError* error) {
  if (fm.attributesOfItem(overlayPath(path)).has_value()) {
    *userData = LocalFileHandle::forUpdating(overlayPath(path), error);
    return *userData != nullptr;
  }
  if (discHasItem(path)) {
    *userData = LocalFileHandle::forReading(discPath(path), error);
    return *userData != nullptr;
  }
  systemLog("Error! Openfile did not find file! %@", path);
  return false;
}

int32_t BurnFSDelegate::readFileAtPath(const std::string& path, UserData* userData, char* buffer,
                                       size_t size, off_t offset, PosixError* error) {
  if (userData == nullptr) {
    systemLog("Error! Readfile %@ with userData %@", path, kNil);
    return 0;
  }
  handleOf(*userData).read(buffer, static_cast<uint32_t>(size), offset, error);
  return static_cast<int32_t>(size);
}

void BurnFSDelegate::releaseFileAtPath(const std::string& path,
                                       std::unique_ptr<UserData> userData) {
  if (userData == nullptr) systemLog("Error! Releasefile with nil userdata %@", path);
}

int32_t BurnFSDelegate::writeFileAtPath(const std::string& path, UserData* userData,
                                        const char* buffer, size_t size, off_t offset,
                                        PosixError* error) {
  if (!hasSpace()) {
    setError(error, ENOSPC);
    return 0;
  }
  // The handle of a disc file takes no writes: nothing is counted then.
  if (userData == nullptr || !userData->isWritable()) {
    setError(error, EROFS);
    return 0;
  }
  if (!handleOf(*userData).write(buffer, static_cast<uint32_t>(size), offset, error)) return 0;
  movedItems_.noteChange(path);
  localusedbytes_ += static_cast<int64_t>(size);
  postSizeChanged();
  return static_cast<int32_t>(size);
}

}  // namespace kelvane
