// SPDX-License-Identifier: GPL-2.0-or-later
#include <algorithm>

#include "media/media_scan.h"
#include "platform/foundation/strings_table.h"
#include "platform/recording/dr_device.h"

namespace kelvane {
namespace {

bool isLoadingDiscAlone(std::span<const DeviceRecord> records) {
  return records.size() == 1 && records.front().unsupportedString == "";
}

ScanOutcome outcomeForLoadingDisc() {
  ScanOutcome outcome;
  outcome.openButton = Visibility::Hidden;
  outcome.diskTableView = Visibility::Hidden;
  outcome.messageView = Visibility::Shown;
  outcome.message = localizedString("loadingdisk");
  return outcome;
}

std::optional<size_t> firstUsable(std::span<const DeviceRecord> records) {
  const auto found = std::find_if(records.begin(), records.end(), isUsable);
  if (found == records.end()) return std::nullopt;
  return static_cast<size_t>(found - records.begin());
}

}  // namespace

ScanAction scanAction(const ScanSituation& situation) {
  const bool isOpen = situation.mediaIsMounted && !situation.burnInProgress;
  if (isOpen && situation.currentDevice != nullptr && !situation.currentDevice->mediaIsPresent()) {
    return ScanAction::ReportDisappearedMedia;
  }
  if (situation.burnInProgress || situation.mediaIsMounted || situation.currentDevice != nullptr) {
    return ScanAction::LeaveListAlone;
  }
  return ScanAction::RebuildList;
}

ScanOutcome scanOutcome(std::span<const DeviceRecord> records,
                        std::optional<size_t> selectionIndex) {
  if (isLoadingDiscAlone(records)) return outcomeForLoadingDisc();
  ScanOutcome outcome;
  // A selection that stands where no disc can be selected any more is none.
  const bool isSelected =
      selectionIndex && *selectionIndex < records.size() && isUsable(records[*selectionIndex]);
  if (!isSelected) outcome.selectionIndex = firstUsable(records);
  const bool single = std::count_if(records.begin(), records.end(), isUsable) == 1;
  const bool showsMessage = records.empty() || single;
  const Visibility list = showsMessage ? Visibility::Hidden : Visibility::Shown;
  outcome.openButton = list;
  outcome.diskScrollView = list;
  outcome.messageView = showsMessage ? Visibility::Shown : Visibility::Hidden;
  outcome.message = showsMessage ? localizedString("insertdisk") : "";
  outcome.opensDisc = single;
  return outcome;
}

}  // namespace kelvane
