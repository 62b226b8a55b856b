// SPDX-License-Identifier: GPL-2.0-or-later
// The functions that tell what a path or descriptor is. The drive is a block device, whoever asks
// and however.
#undef _FILE_OFFSET_BITS
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "virtualdrive/shim/next_function.h"
#include "virtualdrive/shim/shown_drive.h"

namespace kelvane::virtualdrive::shim {
namespace {

constexpr mode_t kNodeMode = S_IFBLK | 0660;

template <typename Status>
void becomeDevice(const ShownDrive& shown, Status* status) {
  status->st_mode = kNodeMode;
  status->st_rdev = shown.deviceNumber();
  status->st_size = 0;
  status->st_blocks = 0;
}

void becomeDevice(const ShownDrive& shown, struct statx* status) {
  status->stx_mode = static_cast<std::uint16_t>(kNodeMode);
  status->stx_rdev_major = major(shown.deviceNumber());
  status->stx_rdev_minor = minor(shown.deviceNumber());
  status->stx_size = 0;
  status->stx_blocks = 0;
}

bool isSectorsFile(const ShownDrive& shown, const struct statx& status) {
  return shown.isSectorsFile(makedev(status.stx_dev_major, status.stx_dev_minor), status.stx_ino);
}

template <typename Status>
bool isSectorsFile(const ShownDrive& shown, const Status& status) {
  return shown.isSectorsFile(status.st_dev, status.st_ino);
}

/// Asks about a path. `ask` takes the path to ask about and calls what is stood in for.
template <typename Status, typename Ask>
int askPath(const char* path, Status* status, Ask ask) {
  const auto* shown = shownDrive();
  if (shown == nullptr) return ask(path);
  const bool device = shown->isDevicePath(path);
  const int result = ask(device ? shown->sectorsPath() : path);
  if (result != 0) return result;
  if (device || (ShownDrive::mayLeadToDescriptor(path) && isSectorsFile(*shown, *status))) {
    becomeDevice(*shown, status);
  }
  return result;
}

/// Asks about a descriptor.
template <typename Status, typename Ask>
int askDescriptor(Status* status, Ask ask) {
  const int result = ask();
  const auto* shown = shownDrive();
  if (result == 0 && shown != nullptr && isSectorsFile(*shown, *status)) {
    becomeDevice(*shown, status);
  }
  return result;
}

/// Asks as the *at functions do: about the descriptor itself where the path is empty.
template <typename Status, typename Ask>
int askAt(const char* path, Status* status, Ask ask) {
  if (path == nullptr || *path == '\0') return askDescriptor(status, [&] { return ask(path); });
  return askPath(path, status, ask);
}

bool refersToDrive(const char* path) {
  const auto* shown = shownDrive();
  return shown != nullptr && shown->isDevicePath(path);
}

/// What access(2) says of a device node that may be read and written.
int accessDevice(int mode) {
  if ((mode & X_OK) == 0) return 0;
  errno = EACCES;
  return -1;
}

template <typename Status>
using StatPath = int(const char*, Status*);
template <typename Status>
using StatDescriptor = int(int, Status*);
template <typename Status>
using StatAt = int(int, const char*, Status*, int);
template <typename Status>
using VersionedStat = int(int, const char*, Status*);
template <typename Status>
using VersionedFstat = int(int, int, Status*);
template <typename Status>
using VersionedStatAt = int(int, int, const char*, Status*, int);

}  // namespace
}  // namespace kelvane::virtualdrive::shim

namespace shim = kelvane::virtualdrive::shim;
using Stat = struct stat;
using Stat64 = struct stat64;

// glibc 2.33 and later
KELVANE_STANDS_IN int stat(const char* path, Stat* status) noexcept {
  static auto* next = shim::nextFunction<shim::StatPath<Stat>>("stat");
  return shim::askPath(path, status, [&](const char* name) { return next(name, status); });
}
KELVANE_STANDS_IN int stat64(const char* path, Stat64* status) noexcept {
  static auto* next = shim::nextFunction<shim::StatPath<Stat64>>("stat64");
  return shim::askPath(path, status, [&](const char* name) { return next(name, status); });
}
KELVANE_STANDS_IN int lstat(const char* path, Stat* status) noexcept {
  static auto* next = shim::nextFunction<shim::StatPath<Stat>>("lstat");
  return shim::askPath(path, status, [&](const char* name) { return next(name, status); });
}
KELVANE_STANDS_IN int lstat64(const char* path, Stat64* status) noexcept {
  static auto* next = shim::nextFunction<shim::StatPath<Stat64>>("lstat64");
  return shim::askPath(path, status, [&](const char* name) { return next(name, status); });
}
KELVANE_STANDS_IN int fstat(int descriptor, Stat* status) noexcept {
  static auto* next = shim::nextFunction<shim::StatDescriptor<Stat>>("fstat");
  return shim::askDescriptor(status, [&] { return next(descriptor, status); });
}
KELVANE_STANDS_IN int fstat64(int descriptor, Stat64* status) noexcept {
  static auto* next = shim::nextFunction<shim::StatDescriptor<Stat64>>("fstat64");
  return shim::askDescriptor(status, [&] { return next(descriptor, status); });
}
KELVANE_STANDS_IN int fstatat(int folder, const char* path, Stat* status, int flags) noexcept {
  static auto* next = shim::nextFunction<shim::StatAt<Stat>>("fstatat");
  return shim::askAt(path, status,
                     [&](const char* name) { return next(folder, name, status, flags); });
}
KELVANE_STANDS_IN int fstatat64(int folder, const char* path, Stat64* status, int flags) noexcept {
  static auto* next = shim::nextFunction<shim::StatAt<Stat64>>("fstatat64");
  return shim::askAt(path, status,
                     [&](const char* name) { return next(folder, name, status, flags); });
}
KELVANE_STANDS_IN int statx(int folder, const char* path, int flags, unsigned mask,
                            struct statx* status) noexcept {
  using Next = int(int, const char*, int, unsigned, struct statx*);
  static auto* next = shim::nextFunction<Next>("statx");
  // The inode tells the drive, so it is always asked for.
  return shim::askAt(path, status, [&](const char* name) {
    return next(folder, name, flags, mask | STATX_INO | STATX_TYPE, status);
  });
}

// What programs call that were linked with an older glibc. The names are those of the C library.
// NOLINTBEGIN(bugprone-reserved-identifier)
KELVANE_STANDS_IN int __xstat(int version, const char* path, Stat* status) noexcept {
  static auto* next = shim::nextFunction<shim::VersionedStat<Stat>>("__xstat");
  return shim::askPath(path, status, [&](const char* name) { return next(version, name, status); });
}
KELVANE_STANDS_IN int __xstat64(int version, const char* path, Stat64* status) noexcept {
  static auto* next = shim::nextFunction<shim::VersionedStat<Stat64>>("__xstat64");
  return shim::askPath(path, status, [&](const char* name) { return next(version, name, status); });
}
KELVANE_STANDS_IN int __lxstat(int version, const char* path, Stat* status) noexcept {
  static auto* next = shim::nextFunction<shim::VersionedStat<Stat>>("__lxstat");
  return shim::askPath(path, status, [&](const char* name) { return next(version, name, status); });
}
KELVANE_STANDS_IN int __lxstat64(int version, const char* path, Stat64* status) noexcept {
  static auto* next = shim::nextFunction<shim::VersionedStat<Stat64>>("__lxstat64");
  return shim::askPath(path, status, [&](const char* name) { return next(version, name, status); });
}
KELVANE_STANDS_IN int __fxstat(int version, int descriptor, Stat* status) noexcept {
  static auto* next = shim::nextFunction<shim::VersionedFstat<Stat>>("__fxstat");
  return shim::askDescriptor(status, [&] { return next(version, descriptor, status); });
}
KELVANE_STANDS_IN int __fxstat64(int version, int descriptor, Stat64* status) noexcept {
  static auto* next = shim::nextFunction<shim::VersionedFstat<Stat64>>("__fxstat64");
  return shim::askDescriptor(status, [&] { return next(version, descriptor, status); });
}
KELVANE_STANDS_IN int __fxstatat(int version, int folder, const char* path, Stat* status,
                                 int flags) noexcept {
  static auto* next = shim::nextFunction<shim::VersionedStatAt<Stat>>("__fxstatat");
  return shim::askAt(path, status,
                     [&](const char* name) { return next(version, folder, name, status, flags); });
}
KELVANE_STANDS_IN int __fxstatat64(int version, int folder, const char* path, Stat64* status,
                                   int flags) noexcept {
  static auto* next = shim::nextFunction<shim::VersionedStatAt<Stat64>>("__fxstatat64");
  return shim::askAt(path, status,
                     [&](const char* name) { return next(version, folder, name, status, flags); });
}
// NOLINTEND(bugprone-reserved-identifier)

KELVANE_STANDS_IN int access(const char* path, int mode) noexcept {
  static auto* next = shim::nextFunction<int(const char*, int)>("access");
  return shim::refersToDrive(path) ? shim::accessDevice(mode) : next(path, mode);
}
KELVANE_STANDS_IN int euidaccess(const char* path, int mode) noexcept {
  static auto* next = shim::nextFunction<int(const char*, int)>("euidaccess");
  return shim::refersToDrive(path) ? shim::accessDevice(mode) : next(path, mode);
}
KELVANE_STANDS_IN int faccessat(int folder, const char* path, int mode, int flags) noexcept {
  static auto* next = shim::nextFunction<int(int, const char*, int, int)>("faccessat");
  return shim::refersToDrive(path) ? shim::accessDevice(mode) : next(folder, path, mode, flags);
}

KELVANE_STANDS_IN ssize_t readlink(const char* path, char* buffer, size_t size) noexcept {
  static auto* next = shim::nextFunction<ssize_t(const char*, char*, size_t)>("readlink");
  if (!shim::refersToDrive(path)) return next(path, buffer, size);
  errno = EINVAL;
  return -1;
}
KELVANE_STANDS_IN char* realpath(const char* path, char* resolved) noexcept {
  static auto* next = shim::nextFunction<char*(const char*, char*)>("realpath");
  if (!shim::refersToDrive(path)) return next(path, resolved);
  return resolved != nullptr
             ? static_cast<char*>(std::memcpy(resolved, path, std::strlen(path) + 1))
             : strdup(path);
}
