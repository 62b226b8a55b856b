// SPDX-License-Identifier: GPL-2.0-or-later
#include "virtualdrive/virtual_drive.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <random>
#include <thread>

#include "virtualdrive/commands/command.h"
#include "virtualdrive/commands/drive_facts.h"
#include "virtualdrive/faults/fault_injector.h"
#include "virtualdrive/state/disc_folder.h"
#include "virtualdrive/state/tray.h"

namespace kelvane::virtualdrive {
namespace {

constexpr std::size_t kBlockBytes = 16;

std::string newSerial() {
  constexpr std::string_view kLetters = "0123456789ABCDEF";
  std::random_device random;
  std::string serial;
  for (int i = 0; i < 16; ++i) serial += kLetters[random() % kLetters.size()];
  return serial;
}

bool isLackOfMeans(int errorNumber) {
  return errorNumber == EMFILE || errorNumber == ENFILE || errorNumber == ENOMEM;
}

}  // namespace

bool VirtualDrive::create(const std::filesystem::path& disc, const NewDisc& what,
                          std::string* error) {
  const auto bounds = capacityBounds(what.medium);
  if (what.capacitySectors < bounds.smallest || what.capacitySectors > bounds.largest) {
    *error = "A " + std::string(nameOf(what.medium)) + " holds " + std::to_string(bounds.smallest) +
             " to " + std::to_string(bounds.largest) + " sectors of 2048 bytes.";
    return false;
  }
  DiscState blank;
  blank.medium = what.medium;
  blank.capacity = what.capacitySectors;
  DriveState drive;
  drive.serial = newSerial();
  const auto speeds = speedsFor(what.medium);
  drive.readSpeed = speeds.read;
  drive.writeSpeed = speeds.write.front();
  drive.writeParameters = WriteParameters::standard(what.medium);
  const SignalsBlocked blocked;
  return DiscFolder::create(disc, blank, drive, error);
}

std::optional<VirtualDrive> VirtualDrive::open(const std::filesystem::path& disc,
                                               std::string* error) {
  std::error_code failure;
  const auto folder = std::filesystem::absolute(disc, failure);
  VirtualDrive drive(failure ? disc : folder);
  if (!drive.inspect(error)) return std::nullopt;
  if (auto problem = FaultInjector::problem(drive.folder_); !problem.empty()) {
    *error = std::move(problem);
    return std::nullopt;
  }
  return drive;
}

CommandResult VirtualDrive::execute(std::span<const std::uint8_t> commandBlock,
                                    std::span<std::uint8_t> dataIn,
                                    std::span<const std::uint8_t> dataOut) const {
  if (commandBlock.empty() || commandBlock.size() > kBlockBytes) return {kInvalidFieldInCommand, 0};
  std::array<std::uint8_t, kBlockBytes> block{};
  std::ranges::copy(commandBlock, block.begin());

  std::chrono::nanoseconds duration{0};
  const CommandResult result = executeLocked(block, dataIn, dataOut, &duration);
  // Without the lock: others may ask the drive meanwhile.
  if (duration.count() > 0) std::this_thread::sleep_for(duration);
  return result;
}

CommandResult VirtualDrive::executeLocked(std::span<const std::uint8_t> block,
                                          std::span<std::uint8_t> dataIn,
                                          std::span<const std::uint8_t> dataOut,
                                          std::chrono::nanoseconds* duration) const {
  const SignalsBlocked blocked;
  std::string error;
  errno = 0;
  auto folder = DiscFolder::lock(folder_, &error);
  if (!folder) {
    const int lacking = isLackOfMeans(errno) ? errno : 0;
    return {kDescriptionDamaged, 0, !isThere(), lacking};
  }
  Command command{block, dataIn, dataOut, *folder, MediumRules::of(folder->disc)};
  FaultInjector faults(*folder);
  const bool wasOpen = folder->drive.trayOpen;
  auto result = faults.before(command);
  if (!result) {
    result = carryOut(command);
    faults.after(command);
  }
  faults.noteTray(wasOpen);
  *duration = faults.timeFor(command, *result);
  const bool stored = (!command.driveChanged || folder->storeDrive()) && faults.store();
  return stored || result->gone ? *result : CommandResult{kDescriptionDamaged, 0};
}

bool VirtualDrive::insertDisc(std::string* error) const {
  const SignalsBlocked blocked;
  auto folder = DiscFolder::lock(folder_, error);
  if (!folder) return false;
  if (!loadTray(folder->drive)) return true;
  FaultInjector faults(*folder);
  faults.noteTray(true);
  if (folder->storeDrive() && faults.store()) return true;
  *error = "The disc's state cannot be written.";
  return false;
}

bool VirtualDrive::ejectDisc(EjectManner manner, std::string* error) const {
  const SignalsBlocked blocked;
  auto folder = DiscFolder::lock(folder_, error);
  if (!folder) return false;
  auto& drive = folder->drive;
  const bool refused = drive.removalPrevented && !drive.trayOpen && manner == EjectManner::Button;
  if (refused) {
    drive.mediaEvent = MediaEvent::EjectRequest;
    folder->storeDrive();
    *error = "A program has locked the tray.";
    return false;
  }
  if (!openTray(drive) || folder->storeDrive()) return true;
  *error = "The disc's state cannot be written.";
  return false;
}

bool VirtualDrive::mediaLoaded() const {
  const SignalsBlocked blocked;
  std::string error;
  const auto folder = DiscFolder::lock(folder_, &error);
  return folder && !folder->drive.trayOpen;
}

void VirtualDrive::takeNewsOfMedium() const {
  const SignalsBlocked blocked;
  std::string error;
  auto folder = DiscFolder::lock(folder_, &error);
  if (!folder || !folder->drive.unitAttention) return;
  folder->drive.unitAttention = false;
  folder->storeDrive();
}

bool VirtualDrive::isThere() const {
  std::error_code ignored;
  return std::filesystem::exists(folder_ / "disc.json", ignored);
}

bool VirtualDrive::refusesExclusiveAccess() const {
  const SignalsBlocked blocked;
  std::string error;
  auto folder = DiscFolder::lock(folder_, &error);
  return folder && FaultInjector(*folder).refusesExclusiveAccess();
}

std::optional<DiscState> VirtualDrive::inspect(std::string* error) const {
  const SignalsBlocked blocked;
  const auto folder = DiscFolder::lock(folder_, error);
  if (!folder) return std::nullopt;
  return folder->disc;
}

}  // namespace kelvane::virtualdrive
