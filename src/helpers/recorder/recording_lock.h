// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <optional>
#include <string>

#include "platform/recording/file_lock.h"

namespace kelvane::recorder {

/// Takes the lock that shows others that the drive is at work; none where `path` is empty. A
/// sentence where another recorder has it; else empty.
std::string lockForRecording(const std::string& path, std::optional<FileLock>& lock);

}  // namespace kelvane::recorder
