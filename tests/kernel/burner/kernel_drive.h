// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "owned_path.h"
#include "ring_device.h"
#include "ring_server.h"
#include "virtualdrive/virtual_drive.h"

namespace kelvane::kernelburner {

/// An emulated drive, plugged into the running kernel: a storage object in user space
/// (target_core_user) behind a SCSI host of its own (tcm_loop), so that it appears as /dev/srN.
///
/// It needs root, a configuration file system at /sys/kernel/config, and the modules. The kernel
/// makes a difference neither in what it asks nor in what it shows between this drive and one on a
/// cable. The destructor unplugs it: programs that use it then get errors.
class KernelDrive {
 public:
  /// Plugs `drive` in and waits until the kernel has found it. `name` (letters, digits, "_") is the
  /// storage object's, and no other's at that time. `onGone`: see answersOf(). Null, with a
  /// sentence in `error`, where that fails; nothing is left behind then.
  static std::unique_ptr<KernelDrive> plug(const virtualdrive::VirtualDrive& drive,
                                           const std::string& name, std::function<void()> onGone,
                                           std::string* error);

  /// The kernel's name for the drive, such as "sr0".
  const std::string& deviceName() const { return deviceName_; }

 private:
  KernelDrive() = default;
  bool makeStorage(const std::string& name, std::string* error);
  bool serve(const virtualdrive::VirtualDrive& drive, const std::string& name,
             std::function<void()> onGone, std::string* error);
  bool makeHost(const std::string& name, std::string* error);
  bool findDevice(std::string* error);

  // In the order in which they are made; they go in the reverse one. The ring is served until the
  // host is gone, because its removal waits for commands under way.
  std::unique_ptr<OwnedFolder> storage_;
  std::unique_ptr<RingDevice> ringDevice_;
  std::unique_ptr<RingServer> server_;
  std::unique_ptr<OwnedFolder> host_;
  std::unique_ptr<OwnedFolder> portal_;
  std::unique_ptr<OwnedFolder> unit_;
  std::unique_ptr<OwnedLink> attachment_;
  std::string deviceName_;
};

}  // namespace kelvane::kernelburner
