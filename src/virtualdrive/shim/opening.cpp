// SPDX-License-Identifier: GPL-2.0-or-later
// The functions that open the drive. They must exist under each name the C library has for them.
#undef _FILE_OFFSET_BITS
#include "virtualdrive/shim/opening.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "virtualdrive/shim/next_function.h"

namespace kelvane::virtualdrive::shim {

int openDrive(const ShownDrive& shown, int flags) {
  const StepAside aside;
  if (!shown.drive().isThere()) {
    errno = ENXIO;
    return -1;
  }
  if ((flags & O_EXCL) != 0 && shown.drive().refusesExclusiveAccess()) {
    errno = EBUSY;
    return -1;
  }
  if ((flags & O_NONBLOCK) == 0 && !shown.drive().mediaLoaded()) {
    errno = ENOMEDIUM;
    return -1;
  }
  shown.drive().takeNewsOfMedium();
  return ::open(shown.sectorsPath(), O_RDONLY | (flags & (O_CLOEXEC | O_NONBLOCK | O_NOCTTY)));
}

namespace {

using Open = int(const char*, int, ...);
using OpenAt = int(int, const char*, int, ...);
using CheckedOpen = int(const char*, int);
using CheckedOpenAt = int(int, const char*, int);
using OpenStream = FILE*(const char*, const char*);

int openAny(Open* next, const char* path, int flags, mode_t mode) {
  const auto* shown = shownDrive();
  if (shown != nullptr && shown->isDevicePath(path)) return openDrive(*shown, flags);
  return next(path, flags, mode);
}

int openAnyAt(OpenAt* next, int folder, const char* path, int flags, mode_t mode) {
  const auto* shown = shownDrive();
  if (shown != nullptr && shown->isDevicePath(path)) return openDrive(*shown, flags);
  return next(folder, path, flags, mode);
}

FILE* openStream(OpenStream* next, const char* path, const char* mode) {
  const auto* shown = shownDrive();
  if (shown == nullptr || !shown->isDevicePath(path)) return next(path, mode);
  const int descriptor = openDrive(*shown, std::strchr(mode, 'e') != nullptr ? O_CLOEXEC : 0);
  if (descriptor < 0) return nullptr;
  auto* stream = fdopen(descriptor, "r");
  if (stream == nullptr) close(descriptor);
  return stream;
}

/// Whether the caller has given a mode: only where a file can be made.
bool takesMode(int flags) {
  return (flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE;
}

}  // namespace
}  // namespace kelvane::virtualdrive::shim

namespace shim = kelvane::virtualdrive::shim;

KELVANE_STANDS_IN int open(const char* path, int flags, ...) {
  static auto* next = shim::nextFunction<shim::Open>("open");
  va_list arguments;
  va_start(arguments, flags);
  const auto mode = shim::takesMode(flags) ? va_arg(arguments, mode_t) : mode_t{0};
  va_end(arguments);
  return shim::openAny(next, path, flags, mode);
}

KELVANE_STANDS_IN int open64(const char* path, int flags, ...) {
  static auto* next = shim::nextFunction<shim::Open>("open64");
  va_list arguments;
  va_start(arguments, flags);
  const auto mode = shim::takesMode(flags) ? va_arg(arguments, mode_t) : mode_t{0};
  va_end(arguments);
  return shim::openAny(next, path, flags, mode);
}

KELVANE_STANDS_IN int openat(int folder, const char* path, int flags, ...) {
  static auto* next = shim::nextFunction<shim::OpenAt>("openat");
  va_list arguments;
  va_start(arguments, flags);
  const auto mode = shim::takesMode(flags) ? va_arg(arguments, mode_t) : mode_t{0};
  va_end(arguments);
  return shim::openAnyAt(next, folder, path, flags, mode);
}

KELVANE_STANDS_IN int openat64(int folder, const char* path, int flags, ...) {
  static auto* next = shim::nextFunction<shim::OpenAt>("openat64");
  va_list arguments;
  va_start(arguments, flags);
  const auto mode = shim::takesMode(flags) ? va_arg(arguments, mode_t) : mode_t{0};
  va_end(arguments);
  return shim::openAnyAt(next, folder, path, flags, mode);
}

// What programs call that were compiled with _FORTIFY_SOURCE. The names are those of the C library.
// NOLINTBEGIN(bugprone-reserved-identifier)
KELVANE_STANDS_IN int __open_2(const char* path, int flags) {
  static auto* next = shim::nextFunction<shim::CheckedOpen>("__open_2");
  const auto* shown = shim::shownDrive();
  if (shown != nullptr && shown->isDevicePath(path)) return shim::openDrive(*shown, flags);
  return next(path, flags);
}

KELVANE_STANDS_IN int __open64_2(const char* path, int flags) {
  static auto* next = shim::nextFunction<shim::CheckedOpen>("__open64_2");
  const auto* shown = shim::shownDrive();
  if (shown != nullptr && shown->isDevicePath(path)) return shim::openDrive(*shown, flags);
  return next(path, flags);
}

KELVANE_STANDS_IN int __openat_2(int folder, const char* path, int flags) {
  static auto* next = shim::nextFunction<shim::CheckedOpenAt>("__openat_2");
  const auto* shown = shim::shownDrive();
  if (shown != nullptr && shown->isDevicePath(path)) return shim::openDrive(*shown, flags);
  return next(folder, path, flags);
}

KELVANE_STANDS_IN int __openat64_2(int folder, const char* path, int flags) {
  static auto* next = shim::nextFunction<shim::CheckedOpenAt>("__openat64_2");
  const auto* shown = shim::shownDrive();
  if (shown != nullptr && shown->isDevicePath(path)) return shim::openDrive(*shown, flags);
  return next(folder, path, flags);
}
// NOLINTEND(bugprone-reserved-identifier)

KELVANE_STANDS_IN FILE* fopen(const char* path, const char* mode) {
  static auto* next = shim::nextFunction<shim::OpenStream>("fopen");
  return shim::openStream(next, path, mode);
}

KELVANE_STANDS_IN FILE* fopen64(const char* path, const char* mode) {
  static auto* next = shim::nextFunction<shim::OpenStream>("fopen64");
  return shim::openStream(next, path, mode);
}
