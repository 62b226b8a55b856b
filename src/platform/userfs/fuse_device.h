// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <string>

namespace kelvane::userfs {

/// Why this process cannot mount through the kernel's FUSE device, in sentences for the user that
/// say what helps; empty where it can.
std::string whyFuseDeviceIsUnusable(const std::string& device = "/dev/fuse");

}  // namespace kelvane::userfs
