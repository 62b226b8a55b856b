// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/recording/drive_registry.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <utility>

#include "platform/recording/dr_device.h"
#include "platform/recording/drive.h"
#include "platform/recording/drive_permission.h"
#include "platform/recording/drive_watcher.h"
#include "platform/recording/emulated_drive.h"
#include "platform/recording/real_drives.h"

namespace kelvane {
namespace {

constexpr char kEmulatedDrivesVariable[] = "KELVANEFS_EMULATED_DRIVES";

// The folder by its one true name, so that it is recognised however it was written.
std::string canonicalPath(const std::string& path) {
  std::error_code failure;
  const auto canonical = std::filesystem::canonical(path, failure);
  if (!failure) return canonical.string();
  return std::filesystem::absolute(path, failure).string();
}

}  // namespace

DriveRegistry& DriveRegistry::shared() {
  static DriveRegistry registry;
  return registry;
}

DriveRegistry::DriveRegistry() = default;

DriveRegistry::~DriveRegistry() = default;

void DriveRegistry::setRealDrives(RealDrives realDrives) {
  realDrives_ = realDrives;
}

DRDevice* DriveRegistry::addEmulatedDrive(const std::string& path, std::string* error) {
  const std::string folder = canonicalPath(path);
  for (const auto& device : emulated_) {
    if (device->emulatedDisc() == folder) {
      *error = folder + " is in a drive already.";
      return nullptr;
    }
  }
  const std::string name = "kv" + std::to_string(emulated_.size());
  std::unique_ptr<Drive> drive = openEmulatedDrive(folder, name, error);
  if (!drive) return nullptr;
  emulated_.push_back(std::make_unique<DRDevice>(std::move(drive)));
  publishEmulatedDrives();
  DriveWatcher::shared().checkSoon();
  return emulated_.back().get();
}

DRDevice* DriveRegistry::addRealDrive(const std::string& path, std::string* error) {
  const std::filesystem::path node = canonicalPath(path);
  const std::vector<std::string> names = realDriveNames();
  const std::string name = node.filename().string();
  const bool isDrive =
      node.parent_path() == "/dev" && std::find(names.begin(), names.end(), name) != names.end();
  if (!isDrive) {
    *error = path + " is no optical drive.";
    return nullptr;
  }
  *error = whyDriveIsClosed(node.string());
  if (!error->empty()) return nullptr;
  added_.push_back(name);
  DriveWatcher::shared().checkSoon();
  return realDrive(name);
}

void DriveRegistry::publishEmulatedDrives() const {
  std::string lines;
  for (const auto& device : emulated_) {
    lines += device->bsdName() + "=" + *device->emulatedDisc() + "\n";
  }
  setenv(kEmulatedDrivesVariable, lines.c_str(), 1);
}

std::vector<DRDevice*> DriveRegistry::devices() {
  if (realDrives_ == RealDrives::Included) findRealDrives();
  std::vector<DRDevice*> devices;
  for (const auto& device : emulated_) devices.push_back(device.get());
  for (const auto& device : real_) {
    if (isListed(*device)) devices.push_back(device.get());
  }
  return devices;
}

bool DriveRegistry::isListed(const DRDevice& realDevice) const {
  return realDrives_ == RealDrives::Included ||
         std::find(added_.begin(), added_.end(), realDevice.bsdName()) != added_.end();
}

void DriveRegistry::findRealDrives() {
  for (const std::string& name : realDriveNames()) realDrive(name);
}

// A drive that is plugged in again under its old name is the one it was.
DRDevice* DriveRegistry::realDrive(const std::string& name) {
  const auto known = std::find_if(real_.begin(), real_.end(), [&name](const auto& device) {
    return device->bsdName() == name;
  });
  if (known != real_.end()) return known->get();
  real_.push_back(std::make_unique<DRDevice>(openRealDrive(name)));
  return real_.back().get();
}

void DriveRegistry::reset() {
  DriveWatcher::shared().stop();
  emulated_.clear();
  real_.clear();
  added_.clear();
  realDrives_ = RealDrives::Included;
  unsetenv(kEmulatedDrivesVariable);
}

}  // namespace kelvane
