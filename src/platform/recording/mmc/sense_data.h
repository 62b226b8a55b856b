// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <cstdint>
#include <span>

#include "platform/recording/mmc_transport.h"

namespace kelvane::mmc {

/// Reads sense data in fixed (70h, 71h) or descriptor (72h, 73h) format. Data in neither, or too
/// short for its fields, reads as zeros. (SPC-3, 4.5.2 and 4.5.3)
Sense parseSenseData(std::span<const uint8_t> data);

}  // namespace kelvane::mmc
