// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/volumes/device_resolver.h"

namespace kelvane::launchers {

/// Replaces the name of a drive that follows `option` by what the program can open: the device
/// node, or the file of sectors of an emulated drive. What follows the option but names no drive (a
/// file, a descriptor) stays, as do all other arguments. The last argument has nothing that follows
/// it.
void resolveDeviceAfter(std::string_view option, const std::vector<EmulatedDrive>& drives,
                        std::vector<std::string>& arguments);

/// The argument that follows the first of `options` to be met; null where none of them has one. A
/// pointer into `arguments`.
std::string* findArgumentAfter(const std::vector<std::string_view>& options,
                               std::vector<std::string>& arguments);

}  // namespace kelvane::launchers
