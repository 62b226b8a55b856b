// SPDX-License-Identifier: GPL-2.0-or-later
#include "helpers/recorder/recording_lock.h"

namespace kelvane::recorder {
namespace {

// Whoever looks whether the drive is busy holds the lock for a moment.
constexpr std::chrono::milliseconds kLockPatience{3000};

}  // namespace

std::string lockForRecording(const std::string& path, std::optional<FileLock>& lock) {
  if (path.empty()) return {};
  lock = FileLock::acquire(path, kLockPatience);
  return lock ? std::string() : "Another recording is running on this drive.";
}

}  // namespace kelvane::recorder
