// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/recording/real_drives.h"

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>

#include "platform/recording/mmc/sg_io_transport.h"

namespace kelvane {
namespace {

constexpr std::string_view kPrefix = "sr";

bool isDriveName(std::string_view name) {
  if (!name.starts_with(kPrefix) || name.size() == kPrefix.size()) return false;
  name.remove_prefix(kPrefix.size());
  return std::all_of(name.begin(), name.end(),
                     [](char character) { return character >= '0' && character <= '9'; });
}

bool comesBefore(const std::string& one, const std::string& other) {
  return one.size() != other.size() ? one.size() < other.size() : one < other;
}

}  // namespace

std::vector<std::string> realDriveNames(const std::string& blockDevices) {
  std::vector<std::string> names;
  std::error_code failure;
  for (std::filesystem::directory_iterator entry(blockDevices, failure), end;
       !failure && entry != end; entry.increment(failure)) {
    const std::string name = entry->path().filename().string();
    if (isDriveName(name)) names.push_back(name);
  }
  std::sort(names.begin(), names.end(), comesBefore);
  return names;
}

std::unique_ptr<Drive> openRealDrive(const std::string& name, const std::string& blockDevices) {
  const std::string sysfsEntry = blockDevices + "/" + name;
  const std::string node = "/dev/" + name;
  std::error_code failure;
  const auto sysfsPath = std::filesystem::canonical(sysfsEntry, failure);
  DriveIdentity identity;
  identity.bsdName = name;
  identity.ioRegistryEntryPath = failure ? sysfsEntry : sysfsPath.string();
  identity.presencePath = sysfsEntry;
  identity.exclusiveLockPath = node;
  // Not the node: a recorder's descriptor of that would keep the kernel from noticing the new disc.
  identity.recordingLockPath = sysfsEntry;
  identity.programPath = node;
  return std::make_unique<Drive>(std::move(identity), std::make_unique<mmc::SgIoTransport>(node));
}

}  // namespace kelvane
