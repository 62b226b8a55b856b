// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <string>
#include <vector>

#include "burn/dvd_burn_parameters.h"

namespace kelvane {

/// The arguments for growisofs. The hide lists are named for a first session, too.
std::vector<std::string> growisofsArguments(const DVDBurnParameters& parameters);

}  // namespace kelvane
