// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

#include "ui/copy_job.h"

namespace kelvane {

/// What a copy would copy, found out before it begins.
struct CopySurvey {
  /// The items of the request that can be copied.
  std::vector<std::string> sources;
  uint64_t files = 0;
  uint64_t bytes = 0;
  /// Items that cannot, among them some in folders that can.
  std::vector<CopyFailure> failures;
};

/// Looks at all that is to be copied. Incomplete where `stop` was requested.
CopySurvey surveyCopy(const CopyRequest& request, const std::stop_token& stop);

/// Why an item of that kind cannot go onto a disc; empty where it can. `path` is only named.
std::optional<CopyFailure> whyNotCopied(const std::string& path, const struct stat& status);

/// The bytes that are free in a folder.
uint64_t freeRoomIn(const std::string& folder);

}  // namespace kelvane
