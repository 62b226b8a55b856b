// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "platform/recording/mmc_transport.h"

namespace kelvane::mmc {

constexpr size_t kSectorBytes = 2048;
using Sector = std::array<uint8_t, kSectorBytes>;

/// READ (10) of one sector of user data. Empty where it cannot be read. (MMC-5, 6.23)
std::optional<Sector> readSector(Transport& transport, int32_t address);

}  // namespace kelvane::mmc
