// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/volumes/device_resolver.h"

#include <algorithm>
#include <cstdlib>

namespace kelvane {
namespace {

constexpr std::string_view kEmulatedPrefix = "kv";
constexpr std::string_view kLinuxPrefix = "sr";
constexpr std::string_view kFirstSlice = "s0";

bool isNumber(std::string_view text) {
  return !text.empty() &&
         std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

// Whether the name is `prefix` and a number, as all names of drives are.
bool isDriveName(std::string_view name, std::string_view prefix) {
  return name.starts_with(prefix) && isNumber(name.substr(prefix.size()));
}

bool isDriveName(std::string_view name) {
  return isDriveName(name, kEmulatedPrefix) || isDriveName(name, kLinuxPrefix);
}

// The BSD name within a device node's path, or the text itself. "/dev/rkv0" is a raw device; no
// drive's own name begins with "r".
std::string_view withoutDeviceFolder(std::string_view name) {
  constexpr std::string_view kDeviceFolder = "/dev/";
  if (!name.starts_with(kDeviceFolder)) return name;
  name.remove_prefix(kDeviceFolder.size());
  if (name.starts_with('r')) name.remove_prefix(1);
  return name;
}

// "kv0/2" without its count of equal names, "kv0s0" without its slice.
std::string_view withoutCountAndSlice(std::string_view name) {
  const size_t slash = name.find('/');
  if (slash != std::string_view::npos && isNumber(name.substr(slash + 1))) {
    name = name.substr(0, slash);
  }
  if (name.ends_with(kFirstSlice)) name.remove_suffix(kFirstSlice.size());
  return name;
}

std::optional<EmulatedDrive> parseDrive(std::string_view line) {
  const size_t equals = line.find('=');
  if (equals == std::string_view::npos) return std::nullopt;
  const std::string_view folder = line.substr(equals + 1);
  if (!isDriveName(line.substr(0, equals), kEmulatedPrefix) || !folder.starts_with('/')) {
    return std::nullopt;
  }
  return EmulatedDrive{std::string(line.substr(0, equals)), std::string(folder)};
}

}  // namespace

std::vector<EmulatedDrive> parseEmulatedDrives(std::string_view lines) {
  std::vector<EmulatedDrive> drives;
  while (!lines.empty()) {
    const size_t lineFeed = lines.find('\n');
    if (std::optional<EmulatedDrive> drive = parseDrive(lines.substr(0, lineFeed))) {
      drives.push_back(std::move(*drive));
    }
    lines.remove_prefix(lineFeed == std::string_view::npos ? lines.size() : lineFeed + 1);
  }
  return drives;
}

std::vector<EmulatedDrive> emulatedDrivesOfEnvironment() {
  const char* lines = std::getenv(kEmulatedDrivesVariable);
  return lines == nullptr ? std::vector<EmulatedDrive>() : parseEmulatedDrives(lines);
}

std::optional<ResolvedDevice> resolveDevice(std::string_view name,
                                            const std::vector<EmulatedDrive>& drives) {
  const std::string_view drive = withoutCountAndSlice(withoutDeviceFolder(name));
  if (!isDriveName(drive)) return std::nullopt;
  if (isDriveName(drive, kLinuxPrefix)) {
    return ResolvedDevice{ResolvedDevice::Kind::LinuxDevice, "/dev/" + std::string(drive), {}};
  }
  const auto found = std::find_if(drives.begin(), drives.end(), [&](const EmulatedDrive& known) {
    return known.bsdName == drive;
  });
  if (found == drives.end()) return std::nullopt;
  return ResolvedDevice{ResolvedDevice::Kind::EmulatedDrive, found->discFolder + "/sectors",
                        found->discFolder};
}

std::optional<ResolvedDevice> resolveDevice(std::string_view name) {
  return resolveDevice(name, emulatedDrivesOfEnvironment());
}

}  // namespace kelvane
