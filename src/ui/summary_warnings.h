// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QString>
#include <vector>

#include "ui/burn_summary.h"

namespace kelvane {

/// What stands against a burn, in the user's language.
struct SummaryWarning {
  enum class About { Problem, Size, Hidden, ShownStill };

  About about;
  QString message;
  QString explanation;
};

/// The warnings of a summary, in the order in which they are shown; at most one about each.
std::vector<SummaryWarning> warningsOf(const BurnSummary& summary);

}  // namespace kelvane
