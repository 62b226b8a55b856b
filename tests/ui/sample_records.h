// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <string>

#include "media/device_record.h"

namespace kelvane::testing {

/// A disc that can be opened.
DeviceRecord usableRecord(const std::string& volumeName, const std::string& mediaType = "CDRW");

/// A disc that is refused for `reason`, a text of the strings table's.
DeviceRecord refusedRecord(const std::string& volumeName, const std::string& reason);

/// A disc that is still loading.
DeviceRecord loadingRecord(const std::string& loadingText);

}  // namespace kelvane::testing
