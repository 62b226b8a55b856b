// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

namespace kelvane {

/// A progress bar, as those see it who move it. Main thread only.
///
/// The burn progress bar has the range 0 to 2: on a CD the imaging fills 0 to 1 and the burn 1
/// to 2.
class ProgressIndicator {
 public:
  virtual ~ProgressIndicator() = default;

  virtual void setIndeterminate(bool indeterminate) = 0;
  virtual void setDoubleValue(double value) = 0;
  virtual void startAnimation() = 0;
  virtual void stopAnimation() = 0;
};

}  // namespace kelvane
