// SPDX-License-Identifier: GPL-2.0-or-later
#include "helpers/recorder/grabbed_drive.h"

#include <sys/types.h>

#include <cstdint>
#include <ctime>

#include <libburn/libburn.h>

#include "platform/recording/drive_claim.h"

namespace kelvane::recorder {

std::unique_ptr<Libburn> Libburn::start() {
  if (burn::burn_initialize() == 0) return nullptr;
  return std::unique_ptr<Libburn>(new Libburn);
}

Libburn::~Libburn() {
  burn::burn_finish();
}

// With an inherited claim the drive is ours alone already, which libburn need not, and could not,
// make it.
std::unique_ptr<GrabbedDrive> GrabbedDrive::grab(const std::string& devicePath) {
  enum { kShared = 0, kExclusive = 1, kNonBlocking = 0, kDoNotAbort = 0, kLeaveTrayAsItIs = 0 };
  const int manner = inheritedClaim(devicePath) ? kShared : kExclusive;
  burn::burn_preset_device_open(manner, kNonBlocking, kDoNotAbort);
  std::string address = devicePath;
  burn::burn_drive_info* infos = nullptr;
  if (burn::burn_drive_scan_and_grab(&infos, address.data(), kLeaveTrayAsItIs) != 1) return nullptr;
  return std::unique_ptr<GrabbedDrive>(new GrabbedDrive(infos));
}

GrabbedDrive::~GrabbedDrive() {
  constexpr int kKeepTrayClosed = 0;
  burn::burn_drive_release(get(), kKeepTrayClosed);
  burn::burn_drive_info_free(infos_);
}

burn::burn_drive* GrabbedDrive::get() const {
  return infos_[0].drive;
}

}  // namespace kelvane::recorder
