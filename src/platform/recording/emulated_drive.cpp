// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/recording/emulated_drive.h"

#include <utility>

#include "platform/foundation/bundle.h"
#include "platform/recording/mmc/emulated_transport.h"
#include "virtualdrive/shim_environment.h"

namespace kelvane {
namespace {

// Programs see one drive each, so the drives can share a name.
constexpr const char* kShownDevice = virtualdrive::kDefaultShownDevice;

DriveIdentity identityOf(const virtualdrive::VirtualDrive& drive, const std::string& bsdName) {
  const std::string folder = drive.folder().string();
  DriveIdentity identity;
  identity.bsdName = bsdName;
  identity.ioRegistryEntryPath = "/sys/devices/virtual/kelvanefs/block/" + bsdName;
  identity.presencePath = folder + "/disc.json";
  identity.exclusiveLockPath = folder;
  identity.recordingLockPath = drive.sectorsFile().string();
  identity.emulatedDisc = folder;
  identity.programPath = kShownDevice;
  const auto variables = virtualdrive::shimEnvironment(
      Bundle::mainBundle().auxiliaryFolder(), folder, kShownDevice, &identity.programProblem);
  if (!variables) return identity;
  for (const auto& [name, value] : *variables) identity.programEnvironment[name] = value;
  return identity;
}

}  // namespace

std::unique_ptr<Drive> openEmulatedDrive(const std::string& folder, const std::string& bsdName,
                                         std::string* error) {
  auto drive = virtualdrive::VirtualDrive::open(folder, error);
  if (!drive || !drive->insertDisc(error)) return nullptr;
  DriveIdentity identity = identityOf(*drive, bsdName);
  return std::make_unique<Drive>(std::move(identity),
                                 std::make_unique<mmc::EmulatedTransport>(*std::move(drive)));
}

}  // namespace kelvane
