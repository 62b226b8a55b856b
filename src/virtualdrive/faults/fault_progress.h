// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "virtualdrive/state/disc_state.h"

namespace kelvane::virtualdrive {

/// How far a fault script has got: the file `faults.state` beside it, which all processes that use
/// the drive share. Written in place, so that watchers of the folder are not woken up by it. Used
/// under the folder's lock.
struct FaultProgress {
  /// How many commands each fault has counted.
  std::vector<std::uint64_t> counts;
  /// When the tray was closed last, by the monotonic clock; 0 where it was before the script came.
  std::chrono::milliseconds loadedAt{0};
  /// The disc's description at that time, for as long as something is being written since.
  std::string asLoaded;
  /// The lengths of its files of sectors then.
  FileLengths asLoadedFiles;
  /// Whether `asLoaded` is what the drive tells.
  bool isStale = false;

  /// What is stored for this script; a beginning where that is another script's or damaged.
  static FaultProgress load(const std::filesystem::path& file, const std::string& script,
                            std::size_t faultCount);
  bool store(const std::filesystem::path& file, const std::string& script) const;

  bool operator==(const FaultProgress&) const = default;
};

}  // namespace kelvane::virtualdrive
