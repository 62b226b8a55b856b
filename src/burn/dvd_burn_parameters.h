// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <cstdint>
#include <string>

#include "platform/foundation/progress_indicator.h"

namespace kelvane {

class DRDevice;

/// What a DVD session is written from and to.
struct DVDBurnParameters {
  std::string dvdvolumename;  ///< The new session's volume name.
  std::string bsddevicepath;  ///< The raw device of the drive, "/dev/rsr0".
  std::string sourcepath;     ///< The overlay directory.
  /// "YES" where a first session is written, whatever the disc holds; "NO" where its last session
  /// is continued.
  std::string burntoemptydisk;
  std::string overburn;  ///< Read by nobody: growisofs is always asked to go over the limit.
  /// The burn progress bar, with the range 0 to 2. Borrowed; may be null.
  ProgressIndicator* progressIndicator = nullptr;
  DRDevice* currentDevice = nullptr;  ///< The drive; borrowed.
  std::string hideFilePath;           ///< The list of deleted files.
  int32_t burnSpeed = 0;              ///< The tag of the chosen speed: a multiple of 1x; 0: none.
};

}  // namespace kelvane
