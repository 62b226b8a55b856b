// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <fcntl.h>
#include <linux/loop.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <string>

namespace kelvane::test {

/// A file as a block device, where this user may have one; the kernel gives an exclusive descriptor
/// of it once only, as of a drive.
class LoopDevice {
 public:
  explicit LoopDevice(const std::string& file) {
    const int control = open("/dev/loop-control", O_RDWR | O_CLOEXEC);
    const int backing = open(file.c_str(), O_RDONLY | O_CLOEXEC);
    // Another test may be faster; then the next number is tried.
    for (int attempt = 0; control >= 0 && backing >= 0 && attempt < 20 && device_ < 0; ++attempt) {
      attach(ioctl(control, LOOP_CTL_GET_FREE), backing);
    }
    for (const int descriptor : {control, backing}) {
      if (descriptor >= 0) close(descriptor);
    }
  }

  ~LoopDevice() {
    if (device_ < 0) return;
    ioctl(device_, LOOP_CLR_FD);
    close(device_);
  }

  LoopDevice(const LoopDevice&) = delete;
  LoopDevice& operator=(const LoopDevice&) = delete;

  /// Empty where there is none to be had.
  const std::string& path() const { return path_; }

  /// Whether somebody has the device alone.
  bool isHeld() const {
    const int descriptor = open(path_.c_str(), O_RDONLY | O_EXCL | O_CLOEXEC);
    if (descriptor < 0) return true;
    close(descriptor);
    return false;
  }

 private:
  void attach(int number, int backing) {
    if (number < 0) return;
    const std::string path = "/dev/loop" + std::to_string(number);
    const int device = open(path.c_str(), O_RDWR | O_CLOEXEC);
    if (device < 0) return;
    if (ioctl(device, LOOP_SET_FD, backing) == 0) {
      device_ = device;
      path_ = path;
    } else {
      close(device);
    }
  }

  int device_ = -1;
  std::string path_;
};

}  // namespace kelvane::test
