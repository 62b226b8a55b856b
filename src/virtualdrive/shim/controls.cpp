// SPDX-License-Identifier: GPL-2.0-or-later
// ioctl and fcntl on the drive.
#undef _FILE_OFFSET_BITS
#include "virtualdrive/shim/controls.h"

#include <fcntl.h>
#include <linux/fs.h>
#include <scsi/scsi_ioctl.h>
#include <scsi/sg.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdint>
#include <mutex>

#include "virtualdrive/media/medium_rules.h"
#include "virtualdrive/shim/next_function.h"

// The kernel's headers for programs do not give it.
#ifndef SCSI_IOCTL_GET_BUS_NUMBER
#define SCSI_IOCTL_GET_BUS_NUMBER 0x5386
#endif
#ifndef SCSI_IOCTL_GET_IDLUN
#define SCSI_IOCTL_GET_IDLUN 0x5382
#endif

namespace kelvane::virtualdrive::shim {
namespace {

/// The readable length of the disc, which is what READ CAPACITY says.
std::uint64_t readableBytes(const ShownDrive& shown) {
  std::string error;
  const auto disc = shown.drive().inspect(&error);
  return disc ? static_cast<std::uint64_t>(readableEnd(*disc)) * kSectorBytes : 0;
}

/// The requests of linux/fs.h; -ENOTTY for others.
int controlBlockDevice(const ShownDrive& shown, unsigned long request, void* argument) {
  if (request == BLKFLSBUF) return 0;
  if (argument == nullptr) return -ENOTTY;
  switch (request) {
    case BLKGETSIZE64:
      *static_cast<std::uint64_t*>(argument) = readableBytes(shown);
      return 0;
    case BLKGETSIZE:
      *static_cast<unsigned long*>(argument) = readableBytes(shown) / 512;
      return 0;
    case BLKSSZGET:
    case BLKBSZGET:
    case BLKPBSZGET:
      *static_cast<int*>(argument) = static_cast<int>(kSectorBytes);
      return 0;
    case BLKROGET:
      *static_cast<int*>(argument) = 0;
      return 0;
    default:
      return -ENOTTY;
  }
}

/// The requests of the SCSI layer apart from SG_IO; -ENOTTY for others.
int controlScsi(unsigned long request, void* argument) {
  if (argument == nullptr) return -ENOTTY;
  switch (request) {
    case SG_GET_VERSION_NUM:
      *static_cast<int*>(argument) = 30536;
      return 0;
    case SG_SET_TIMEOUT:
    case SG_SET_RESERVED_SIZE:
      return 0;
    case SG_GET_RESERVED_SIZE:
      *static_cast<int*>(argument) = 128 * 1024;
      return 0;
    case SG_EMULATED_HOST:
      *static_cast<int*>(argument) = 0;
      return 0;
    case SCSI_IOCTL_GET_IDLUN: {
      // Target 0, LUN 0, channel 0, host 0; and the host's own number.
      auto* numbers = static_cast<std::uint32_t*>(argument);
      numbers[0] = 0;
      numbers[1] = 0;
      return 0;
    }
    case SCSI_IOCTL_GET_BUS_NUMBER:
      *static_cast<int*>(argument) = 0;
      return 0;
    default:
      return -ENOTTY;
  }
}

/// The record lock on the drive, by which burning programs keep each other away. A write lock needs
/// a descriptor that may write, which the drive's are not, and the file beside it is closed after
/// every command; so a descriptor of its own holds the lock until the program gives it back or
/// ends.
class DriveClaim {
 public:
  /// F_SETLK with F_RDLCK or F_WRLCK; a negative errno or 0.
  int take(const ShownDrive& shown, short type) {
    const std::lock_guard guard(mutex_);
    const StepAside aside;
    if (shown.drive().refusesExclusiveAccess()) return -EAGAIN;
    if (descriptor_ < 0) descriptor_ = ::open(shown.lockPath().c_str(), O_RDWR | O_CLOEXEC);
    if (descriptor_ < 0) return -errno;
    struct flock lock {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    lock.l_len = 1;  // the byte after it is the queue for the commands
    return fcntl(descriptor_, F_OFD_SETLK, &lock) == 0 ? 0 : -errno;
  }
  int giveBack() {
    const std::lock_guard guard(mutex_);
    if (descriptor_ >= 0) close(descriptor_);
    descriptor_ = -1;
    return 0;
  }

 private:
  std::mutex mutex_;
  int descriptor_ = -1;
};

int lockDrive(const ShownDrive& shown, const struct flock& lock) {
  static DriveClaim claim;
  return lock.l_type == F_UNLCK ? claim.giveBack() : claim.take(shown, lock.l_type);
}

/// fcntl's and ioctl's way to say how it went.
int asResult(int result) {
  if (result >= 0) return result;
  errno = -result;
  return -1;
}

using Fcntl = int(int, int, ...);
using Ioctl = int(int, unsigned long, ...);

int controlDescriptor(Fcntl* next, int descriptor, int command, void* argument) {
  if (command == F_SETLK || command == F_SETLKW) {
    const auto* shown = shownDrive();
    if (shown != nullptr && argument != nullptr && shown->ownsDescriptor(descriptor)) {
      return asResult(lockDrive(*shown, *static_cast<struct flock*>(argument)));
    }
  }
  return next(descriptor, command, argument);
}

}  // namespace

int controlDrive(const ShownDrive& shown, unsigned long request, void* argument) {
  const StepAside aside;
  if (request == SG_IO) return passThrough(shown, argument);
  int result = controlScsi(request, argument);
  if (result == -ENOTTY) result = controlBlockDevice(shown, request, argument);
  if (result == -ENOTTY) result = controlCdRom(shown, request, argument);
  return result;
}

}  // namespace kelvane::virtualdrive::shim

namespace shim = kelvane::virtualdrive::shim;

KELVANE_STANDS_IN int ioctl(int descriptor, unsigned long request, ...) noexcept {
  static auto* next = shim::nextFunction<shim::Ioctl>("ioctl");
  va_list arguments;
  va_start(arguments, request);
  void* argument = va_arg(arguments, void*);
  va_end(arguments);
  const auto* shown = shim::shownDrive();
  if (shown == nullptr || !shown->ownsDescriptor(descriptor)) {
    return next(descriptor, request, argument);
  }
  return shim::asResult(shim::controlDrive(*shown, request, argument));
}

KELVANE_STANDS_IN int fcntl(int descriptor, int command, ...) {
  static auto* next = shim::nextFunction<shim::Fcntl>("fcntl");
  va_list arguments;
  va_start(arguments, command);
  void* argument = va_arg(arguments, void*);
  va_end(arguments);
  return shim::controlDescriptor(next, descriptor, command, argument);
}

KELVANE_STANDS_IN int fcntl64(int descriptor, int command, ...) {
  static auto* next = shim::nextFunction<shim::Fcntl>("fcntl64");
  va_list arguments;
  va_start(arguments, command);
  void* argument = va_arg(arguments, void*);
  va_end(arguments);
  return shim::controlDescriptor(next, descriptor, command, argument);
}
