// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "media/device_record.h"
#include "platform/volumes/volume_services.h"

namespace kelvane {

/// What the controller is about when a scan is asked for.
struct ScanSituation {
  bool mediaIsMounted = false;
  bool burnInProgress = false;
  const DRDevice* currentDevice = nullptr;  ///< Null when no disc is open or being opened.
};

/// What a scan has to do, decided before any drive is looked at.
enum class ScanAction {
  ReportDisappearedMedia,  ///< The opened disc is gone.
  LeaveListAlone,          ///< A disc is open, being opened or burnt.
  RebuildList,
};

ScanAction scanAction(const ScanSituation& situation);

/// One record for each drive that holds a usable, loading or unsupported disc, in the order of
/// `devices`. Waits up to 20 seconds for each disc with content to be mounted, on the calling
/// thread; that this is the main thread is accepted.
std::vector<DeviceRecord> buildDeviceRecords(std::span<DRDevice* const> devices,
                                             VolumeServices& services = VolumeServices::system());

enum class Visibility { Shown, Hidden };

/// What a scan changes in the window once the list has been replaced, and whether it opens a disc.
/// What has no value is left as it is.
struct ScanOutcome {
  /// The record to be selected.
  std::optional<size_t> selectionIndex;
  Visibility openButton = Visibility::Hidden;
  /// Set only where a loading disc is alone: that hides the table, everything else its scroll view.
  std::optional<Visibility> diskTableView;
  std::optional<Visibility> diskScrollView;
  Visibility messageView = Visibility::Hidden;
  /// The message, in the user's language.
  std::string message;
  /// Whether the one usable disc is to be opened without the user's choice.
  bool opensDisc = false;

  friend bool operator==(const ScanOutcome&, const ScanOutcome&) = default;
};

/// `selectionIndex` is the list's selection after its content was replaced.
ScanOutcome scanOutcome(std::span<const DeviceRecord> records,
                        std::optional<size_t> selectionIndex);

}  // namespace kelvane
