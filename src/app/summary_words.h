// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <string>
#include <vector>

#include "ui/burn_summary.h"

namespace kelvane {

/// What the confirmation sheet tells, for a terminal: a line for each number and for each warning.
std::vector<std::string> linesOf(const BurnSummary& summary);

}  // namespace kelvane
