// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/recording/drive.h"

namespace kelvane {

/// The kernel's names of the optical drives of this machine, in order: sr0, sr1 …
/// `blockDevices` is sysfs's folder of all block devices.
std::vector<std::string> realDriveNames(const std::string& blockDevices = "/sys/class/block");

/// The connection to the drive that the kernel calls `name`. Opens nothing yet.
std::unique_ptr<Drive> openRealDrive(const std::string& name,
                                     const std::string& blockDevices = "/sys/class/block");

}  // namespace kelvane
