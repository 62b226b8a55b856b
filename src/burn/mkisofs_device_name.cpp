// SPDX-License-Identifier: GPL-2.0-or-later
#include "burn/mkisofs_device_name.h"

#include <algorithm>
#include <tuple>
#include <vector>

#include "platform/foundation/paths.h"
#include "platform/foundation/placeholders.h"
#include "platform/recording/dr_device.h"

namespace kelvane {
namespace {

struct DriveRecord {
  std::string name;
  std::string registryPath;
  const DRDevice* device;
};

std::vector<DriveRecord> sortedRecords(std::span<DRDevice* const> devices) {
  std::vector<DriveRecord> records;
  for (const DRDevice* device : devices) {
    const std::string registryPath = device->ioRegistryEntryPath();
    records.push_back({paths::lastPathComponent(registryPath), registryPath, device});
  }
  std::stable_sort(
      records.begin(), records.end(), [](const DriveRecord& one, const DriveRecord& other) {
        return std::tie(one.name, one.registryPath) < std::tie(other.name, other.registryPath);
      });
  return records;
}

}  // namespace

std::string mkisofsDeviceName(const DRDevice& current, std::span<DRDevice* const> devices) {
  const std::string name = paths::lastPathComponent(current.ioRegistryEntryPath());
  int counter = 1;
  for (const DriveRecord& record : sortedRecords(devices)) {
    if (record.name != name) continue;
    if (record.device == &current && counter >= 2) return name + format("/%i", counter);
    ++counter;
  }
  return name;
}

}  // namespace kelvane
