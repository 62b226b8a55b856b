// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <vector>

#include "platform/foundation/progress_indicator.h"

namespace kelvane::testing {

/// A progress bar that notes what is done to it.
class NotedBar : public ProgressIndicator {
 public:
  void setIndeterminate(bool indeterminate) override { isIndeterminate = indeterminate; }
  void setDoubleValue(double value) override { values.push_back(value); }
  void startAnimation() override { ++starts; }
  void stopAnimation() override {}

  bool isIndeterminate = true;
  std::vector<double> values;
  int starts = 0;
};

}  // namespace kelvane::testing
