// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <vector>

#include "ui/window_outlets.h"

namespace kelvane::testing {

/// Every alert that the application shows, with details such as they come with.
const std::vector<Alert>& everyAlert();

}  // namespace kelvane::testing
