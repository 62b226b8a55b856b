// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/erase_follower.h"

#include <utility>

#include "platform/desktop/work_inhibition.h"
#include "platform/recording/dr_erase.h"
#include "platform/recording/dr_notification_center.h"

namespace kelvane {

EraseFollower::EraseFollower() = default;

EraseFollower::~EraseFollower() {
  DRNotificationCenter::currentRunLoopCenter().removeObserver(this);
}

void EraseFollower::beginProgressSheetForErase(std::unique_ptr<DRErase> erase) {
  if (erase_) return;
  erase_ = std::move(erase);
  DRNotificationCenter::currentRunLoopCenter().addObserver(
      this,
      [this](const Notification& notification) {
        const auto* status = std::any_cast<DREraseStatus>(&notification.userInfo);
        if (status != nullptr) eraseStatusChanged(*status);
      },
      DREraseStatusChangedNotification, erase_.get());
  inhibition_ = std::make_unique<desktop::WorkInhibition>(description_);
  showBeginning(description_);
  erase_->start();
}

void EraseFollower::eraseStatusChanged(const DREraseStatus& status) {
  if (!erase_) return;
  if (!isFinal(status)) {
    const bool isKnown = status.DRStatusStateKey == DRStatusStateErasing;
    showFraction(isKnown ? status.DRStatusPercentCompleteKey : std::nullopt);
    return;
  }
  DRNotificationCenter::currentRunLoopCenter().removeObserver(this);
  erase_.reset();
  inhibition_.reset();
  showEnd(status.DRErrorStatusKey ? status.DRErrorStatusKey->DRErrorStatusErrorStringKey
                                  : std::string());
}

}  // namespace kelvane
