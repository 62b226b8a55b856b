// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <functional>
#include <string>

#include "services/license_window.h"

namespace kelvane {

/// The end-user licence agreement in the user's language, as HTML; empty where it is missing.
std::string licenseText();

/// Shows the end-user licence agreement once for every version of the application. The version for
/// which the user last agreed is the user default "licenseShownForVersion". Main thread only.
class KVLicenseController : public LicenseActions {
 public:
  /// `licenseWindow` is borrowed. `terminate` asks the application to quit.
  KVLicenseController(LicenseWindow& licenseWindow, std::function<void()> terminate);
  ~KVLicenseController() override;
  KVLicenseController(const KVLicenseController&) = delete;
  KVLicenseController& operator=(const KVLicenseController&) = delete;

  /// Shows the agreement where the user has not agreed for this version yet, and waits for the
  /// answer. False where the user has not agreed: the application is about to quit.
  bool showLicenseIfNeeded();

  void agree() override;
  void disagree() override;

 private:
  LicenseWindow& licenseWindow_;
  std::function<void()> terminate_;
  bool agreed_ = false;
};

}  // namespace kelvane
