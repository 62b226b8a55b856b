// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <chrono>
#include <string>

#include "services/update_check.h"

namespace kelvane {

/// Where newer versions are looked for and found.
struct UpdateSource {
  /// HTTP or HTTPS address that answers with the newest version's build number in decimal digits.
  /// Empty where nothing is to be asked.
  std::string versionEndpoint;
  /// Web page from which that version can be had.
  std::string productPage;
  /// How long the endpoint's answer is waited for, all of it.
  std::chrono::milliseconds patience = kUpdateCheckTimeout;

  /// The settings KELVANE_UPDATE_ENDPOINT and KELVANE_PRODUCT_PAGE of this build.
  static UpdateSource ofThisBuild();
};

}  // namespace kelvane
