// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "platform/recording/mmc_transport.h"

namespace kelvane::mmc {

/// The most blocks of 2048 bytes that the medium can be formatted to, from a reply to READ FORMAT
/// CAPACITIES: of its formattable capacities the largest that covers the whole medium (types 00h,
/// 10h, 15h and 26h). Empty where none of these is listed. (MMC-5, 6.24.3)
std::optional<uint32_t> parseFormatCapacity(std::span<const uint8_t> reply);

/// READ FORMAT CAPACITIES, for media that are written over at will. (MMC-5, 6.24)
std::optional<uint32_t> readFormatCapacity(Transport& transport);

}  // namespace kelvane::mmc
