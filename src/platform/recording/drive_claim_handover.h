// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <memory>
#include <optional>

#include "platform/foundation/child_task.h"
#include "platform/foundation/inherited_descriptor.h"
#include "platform/recording/drive_claim.h"

namespace kelvane {

/// A drive's claim on its way to the program that will record on it: launched while this object
/// lives, the program inherits the claim (`inheritedClaim`), so that there is no moment in between
/// in which others could mount the disc. With the object our own part in the claim ends.
class DriveClaimHandover {
 public:
  /// `claim` may be null: then nothing is handed over. `task` is to run in a session of its own;
  /// borrowed for this call only.
  DriveClaimHandover(std::unique_ptr<DriveClaim> claim, ChildTask& task);

 private:
  std::unique_ptr<DriveClaim> claim_;
  std::optional<InheritedDescriptor> inherited_;
};

}  // namespace kelvane
