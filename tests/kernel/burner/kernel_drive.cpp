// SPDX-License-Identifier: GPL-2.0-or-later
#include "kernel_drive.h"

#include <chrono>
#include <cstdio>
#include <system_error>
#include <thread>
#include <utility>

#include "drive_answers.h"

namespace kelvane::kernelburner {
namespace {

const std::filesystem::path kTarget = "/sys/kernel/config/target";
// A command that takes longer has failed for the kernel. Nothing that the emulated drive does
// takes as long.
constexpr char kCommandTimeOutSeconds[] = "120";
// The capacity that the storage object claims. The kernel asks the drive itself for that of a disc.
constexpr char kStorageBytes[] = "4700372992";
constexpr std::chrono::seconds kPatience{60};
constexpr std::chrono::milliseconds kBetweenLooks{10};

// Folders that all drives share: made by the first, and left standing.
bool makeShared(const std::filesystem::path& path, std::string* error) {
  std::error_code failure;
  std::filesystem::create_directory(path, failure);
  if (failure) *error = "mkdir " + path.string() + ": " + failure.message();
  return !failure;
}

// A SCSI name in the form of the registered ones, made up from the storage object's name.
std::string worldWideName(const std::string& name, unsigned role) {
  const auto number = std::hash<std::string>()(name);
  char text[32];
  std::snprintf(text, sizeof text, "naa.5001405%x%08x", role,
                static_cast<unsigned>(number & 0xFFFFFFFF));
  return text;
}

std::string firstEntryOf(const std::filesystem::path& folder) {
  std::error_code failure;
  std::filesystem::directory_iterator entry(folder, failure);
  if (failure || entry == std::filesystem::directory_iterator()) return {};
  return entry->path().filename();
}

}  // namespace

std::unique_ptr<KernelDrive> KernelDrive::plug(const virtualdrive::VirtualDrive& drive,
                                               const std::string& name,
                                               std::function<void()> onGone, std::string* error) {
  std::unique_ptr<KernelDrive> plugged(new KernelDrive());
  const bool works = plugged->makeStorage(name, error) &&
                     plugged->serve(drive, name, std::move(onGone), error) &&
                     plugged->makeHost(name, error) && plugged->findDevice(error);
  if (!works) return nullptr;
  return plugged;
}

bool KernelDrive::makeStorage(const std::string& name, std::string* error) {
  const auto adapter = kTarget / "core" / "user_0";
  if (!makeShared(adapter, error)) return false;
  storage_ = OwnedFolder::make(adapter / name, error);
  if (!storage_) return false;
  const auto& folder = storage_->path();
  const auto control = folder / "control";
  return writeAttribute(control, "dev_config=mmc/" + name, error) &&
         writeAttribute(control, std::string("dev_size=") + kStorageBytes, error) &&
         writeAttribute(control, "hw_block_size=2048", error) &&
         writeAttribute(folder / "attrib" / "cmd_time_out", kCommandTimeOutSeconds, error) &&
         writeAttribute(folder / "enable", "1", error);
}

bool KernelDrive::serve(const virtualdrive::VirtualDrive& drive, const std::string& name,
                        std::function<void()> onGone, std::string* error) {
  ringDevice_ = RingDevice::open(name, error);
  if (!ringDevice_) return false;
  auto ring = CommandRing::over(ringDevice_->memory(), error);
  if (!ring) return false;
  server_ =
      RingServer::start(*ringDevice_, *std::move(ring), answersOf(drive, std::move(onGone)), error);
  return server_ != nullptr;
}

bool KernelDrive::makeHost(const std::string& name, std::string* error) {
  const auto fabric = kTarget / "loopback";
  if (!makeShared(fabric, error)) return false;
  host_ = OwnedFolder::make(fabric / worldWideName(name, 0), error);
  if (!host_) return false;
  portal_ = OwnedFolder::make(host_->path() / "tpgt_1", error);
  if (!portal_ || !writeAttribute(portal_->path() / "nexus", worldWideName(name, 1), error)) {
    return false;
  }
  unit_ = OwnedFolder::make(portal_->path() / "lun" / "lun_0", error);
  if (!unit_) return false;
  // Does not return before the kernel has asked the drive what it is.
  attachment_ = OwnedLink::make(storage_->path(), unit_->path() / "storage", error);
  return attachment_ != nullptr;
}

bool KernelDrive::findDevice(std::string* error) {
  const auto unit = readAttribute(portal_->path() / "address") + ":0";
  const std::filesystem::path folder = "/sys/class/scsi_device/" + unit + "/device/block";
  const auto end = std::chrono::steady_clock::now() + kPatience;
  while (std::chrono::steady_clock::now() < end) {
    deviceName_ = firstEntryOf(folder);
    if (!deviceName_.empty()) return true;
    std::this_thread::sleep_for(kBetweenLooks);
  }
  *error = "The kernel has made no drive of SCSI unit " + unit + ".";
  return false;
}

}  // namespace kelvane::kernelburner
