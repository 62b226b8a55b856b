// SPDX-License-Identifier: GPL-2.0-or-later
#include "virtualdrive/shim/shown_drive.h"

#include <sys/sysmacros.h>

#include <cerrno>
#include <cstdlib>
#include <string_view>

namespace kelvane::virtualdrive::shim {
namespace {

constexpr unsigned kScsiCdRomMajor = 11;

/// N of a path that ends in srN, else 0.
unsigned minorOf(std::string_view path) {
  const auto digits = path.find_last_not_of("0123456789") + 1;
  return static_cast<unsigned>(std::atoi(path.substr(digits).data()));
}

}  // namespace

thread_local int StepAside::depth_ = 0;

ShownDrive::ShownDrive(VirtualDrive drive, std::string devicePath, const struct stat& sectors)
    : drive_(std::move(drive)),
      devicePath_(std::move(devicePath)),
      sectorsPath_(drive_.sectorsFile()),
      lockPath_(drive_.folder() / "lock"),
      deviceNumber_(makedev(kScsiCdRomMajor, minorOf(devicePath_))),
      fileDevice_(sectors.st_dev),
      fileInode_(sectors.st_ino) {}

std::optional<ShownDrive> ShownDrive::fromEnvironment() {
  const char* disc = std::getenv("KELVANE_SHIM_DISC");
  const char* device = std::getenv("KELVANE_SHIM_DEVICE");
  if (disc == nullptr || device == nullptr || *device != '/') return std::nullopt;
  std::string error;
  auto drive = VirtualDrive::open(disc, &error);
  struct stat sectors {};
  if (!drive || stat(drive->sectorsFile().c_str(), &sectors) != 0) return std::nullopt;
  return ShownDrive(*std::move(drive), device, sectors);
}

const ShownDrive* ShownDrive::get() {
  static const std::optional<ShownDrive> shown = [] {
    const int before = errno;
    const StepAside aside;
    auto found = fromEnvironment();
    errno = before;
    return found;
  }();
  return shown ? &*shown : nullptr;
}

bool ShownDrive::isDevicePath(const char* path) const {
  return path != nullptr && devicePath_ == path;
}

bool ShownDrive::mayLeadToDescriptor(const char* path) {
  if (path == nullptr) return false;
  const std::string_view view(path);
  return view.starts_with("/dev/fd/") || view.starts_with("/dev/std") || view.starts_with("/proc/");
}

bool ShownDrive::ownsDescriptor(int descriptor) const {
  const int before = errno;
  const StepAside aside;
  struct stat status {};
  const bool known = fstat(descriptor, &status) == 0;
  errno = before;
  return known && isSectorsFile(status.st_dev, status.st_ino);
}

}  // namespace kelvane::virtualdrive::shim
