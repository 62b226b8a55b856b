// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "virtualdrive/file_descriptor.h"

namespace kelvane::kernelburner {

/// The kernel's user I/O device (/dev/uioN) behind a storage object: the ring's memory, and the
/// descriptor over which both sides wake each other.
class RingDevice {
 public:
  /// Opens that of the storage object `name`. Null, with a sentence in `error`, where there is
  /// none.
  static std::unique_ptr<RingDevice> open(const std::string& name, std::string* error);
  ~RingDevice();
  RingDevice(const RingDevice&) = delete;
  RingDevice& operator=(const RingDevice&) = delete;

  std::span<std::byte> memory() const { return memory_; }
  /// Becomes readable when the kernel has put commands into the ring.
  int descriptor() const { return file_.get(); }
  /// Takes the news that it has.
  void takeNews() const;
  /// Tells the kernel that commands were carried out.
  void tellKernel() const;

 private:
  RingDevice(virtualdrive::FileDescriptor file, std::span<std::byte> memory)
      : file_(std::move(file)), memory_(memory) {}

  virtualdrive::FileDescriptor file_;
  std::span<std::byte> memory_;
};

}  // namespace kelvane::kernelburner
