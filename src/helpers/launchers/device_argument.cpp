// SPDX-License-Identifier: GPL-2.0-or-later
#include "helpers/launchers/device_argument.h"

#include <algorithm>

namespace kelvane::launchers {

void resolveDeviceAfter(std::string_view option, const std::vector<EmulatedDrive>& drives,
                        std::vector<std::string>& arguments) {
  // A value may look like the option, as a volume named "-M" does; no drive is named like one.
  for (size_t i = 1; i < arguments.size(); ++i) {
    if (arguments[i - 1] != option) continue;
    if (const auto device = resolveDevice(arguments[i], drives)) arguments[i] = device->path;
  }
}

std::string* findArgumentAfter(const std::vector<std::string_view>& options,
                               std::vector<std::string>& arguments) {
  for (size_t i = 1; i < arguments.size(); ++i) {
    const bool follows =
        std::find(options.begin(), options.end(), arguments[i - 1]) != options.end();
    if (follows) return &arguments[i];
  }
  return nullptr;
}

}  // namespace kelvane::launchers
