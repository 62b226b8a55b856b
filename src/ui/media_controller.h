// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <cstddef>
#include <functional>
#include <mutex>
#include <optional>
#include <vector>

#include "media/device_record.h"

namespace kelvane {

/// The list of device records that the disc table shows, and which of them is selected.
///
/// Changed on the main thread only. `selectedObjects` may be called from any thread, since the
/// mount worker asks for the selected disc itself.
class MediaController {
 public:
  const std::vector<DeviceRecord>& arrangedObjects() const { return arrangedObjects_; }

  /// Removes all records. The selection index stays: the list that follows is taken to be of the
  /// same drives, unless it is too short for it.
  void removeArrangedObjects();
  void addObjects(std::vector<DeviceRecord> records);

  std::optional<size_t> selectionIndex() const;
  void setSelectionIndex(std::optional<size_t> index);

  /// The selected records, in list order: at most one, since the table selects one row at a time.
  std::vector<DeviceRecord> selectedObjects() const;

  /// Called on the main thread after each change of the records or the selection.
  void setChangeHandler(std::function<void()> handler);

 private:
  void announce();

  mutable std::mutex mutex_;  // Guards the list and the selection against `selectedObjects`.
  std::vector<DeviceRecord> arrangedObjects_;
  std::optional<size_t> selectionIndex_;
  std::function<void()> changeHandler_;
};

}  // namespace kelvane
