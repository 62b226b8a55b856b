// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/recording/drive_claim_handover.h"

#include <string>
#include <utility>

namespace kelvane {

DriveClaimHandover::DriveClaimHandover(std::unique_ptr<DriveClaim> claim, ChildTask& task)
    : claim_(std::move(claim)) {
  if (claim_ == nullptr) return;
  inherited_.emplace(claim_->descriptor());
  task.setEnvironmentVariable(kInheritedClaimVariable, std::to_string(inherited_->number()));
}

}  // namespace kelvane
