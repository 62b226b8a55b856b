// SPDX-License-Identifier: GPL-2.0-or-later
// KVController: the list of discs.
#include "app/kv_controller.h"
#include "media/media_scan.h"
#include "platform/foundation/strings_table.h"
#include "platform/foundation/system_log.h"
#include "platform/recording/dr_device.h"
#include "ui/media_controller.h"

namespace kelvane {

void KVController::scanForMedia() {
  if (scanWaits_.exchange(true)) return;
  performLater([this] {
    scanWaits_ = false;
    performScanForMedia();
  });
}

void KVController::performScanForMedia() {
  giveUpDiscThatFailedToMount();
  switch (scanAction({mediaIsMounted_, burnInProgress_, currentDevice_})) {
    case ScanAction::ReportDisappearedMedia:
      systemLog("Opened media disappeared unexpectedly.");
      respondToUnexpectedMediaEject();
      return;
    case ScanAction::LeaveListAlone:
      scanWasRefused_ = scanWasRefused_ || (!mediaIsMounted_ && !burnInProgress_);
      return;
    case ScanAction::RebuildList:
      break;
  }
  services_.discsWillBeScanned();
  const std::vector<DRDevice*> devices = services_.devices();
  std::vector<DeviceRecord> records = buildDeviceRecords(devices, *services_.volumes);
  MediaController& media = window_.mediaController();
  media.removeArrangedObjects();
  media.addObjects(std::move(records));
  applyScanOutcome(scanOutcome(media.arrangedObjects(), media.selectionIndex()));
}

// Requests to open it are ignored until it has left the drive.
void KVController::giveUpDiscThatFailedToMount() {
  if (!mountHasFailed_ || currentDevice_ == nullptr || currentDevice()->mediaIsPresent()) return;
  mountHasFailed_ = false;
  window_.setHeaderLine(localizedString("headerDisksAvail"));
  giveUpCurrentDevice();
}

bool KVController::holdsAnotherDisc(const DeviceRecord& record) {
  const std::string now = record.DRDevice->mediaIdentity();
  return !now.empty() && !record.mediaIdentity.empty() && now != record.mediaIdentity;
}

void KVController::applyScanOutcome(const ScanOutcome& outcome) {
  if (outcome.selectionIndex) {
    window_.mediaController().setSelectionIndex(outcome.selectionIndex);
  }
  window_.setHidden(HideableView::OpenButton, outcome.openButton == Visibility::Hidden);
  if (outcome.diskTableView) {
    window_.setHidden(HideableView::DiskTable, *outcome.diskTableView == Visibility::Hidden);
  }
  if (outcome.diskScrollView) {
    window_.setHidden(HideableView::DiskScroll, *outcome.diskScrollView == Visibility::Hidden);
  }
  window_.setHidden(HideableView::Message, outcome.messageView == Visibility::Hidden);
  window_.setMessage(outcome.message);
  const bool opensDisc = outcome.opensDisc && singleDisc_ == SingleDisc::Opened;
  if (opensDisc) performLater([this] { mountBurnFS(); });
}

bool KVController::tableViewShouldSelectRow(int32_t row) {
  const std::vector<DeviceRecord>& records = window_.mediaController().arrangedObjects();
  if (row < 0 || static_cast<size_t>(row) >= records.size()) return false;
  return isUsable(records[static_cast<size_t>(row)]);
}

// One that could not be mounted only waits for being taken out.
bool KVController::discIsTaken() const {
  return currentDevice_ != nullptr && !mountHasFailed_;
}

void KVController::tableViewDoubleClicked() {
  mountBurnFS();
}

}  // namespace kelvane
