// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <string>

namespace kelvane {

/// What the user can answer to the licence agreement. Main thread only.
class LicenseActions {
 public:
  virtual ~LicenseActions() = default;

  virtual void agree() = 0;
  virtual void disagree() = 0;
};

/// The window of the licence agreement: its text and two buttons, which call `LicenseActions`. Main
/// thread only.
class LicenseWindow {
 public:
  virtual ~LicenseWindow() = default;

  /// Borrowed; null for nobody.
  virtual void setActions(LicenseActions* actions) = 0;
  /// The agreement as HTML; empty for an empty text view.
  virtual void setLicenseText(const std::string& html) = 0;
  /// Shows the window before all others of the application. Returns when `stopModal` has been
  /// called, the user has disagreed, or the application quits.
  virtual void runModal() = 0;
  virtual void stopModal() = 0;
  /// Takes the window off the screen.
  virtual void orderOut() = 0;
};

}  // namespace kelvane
