// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "platform/recording/mmc_transport.h"

namespace kelvane::mmc {

/// Who made a drive and what it is called, without the padding. Bytes that are no printable ASCII
/// read as a blank.
struct Inquiry {
  std::string vendor;
  std::string product;
  std::string revision;
};

/// Reads a reply to INQUIRY. Empty where it ends before the product's name. (SPC-3, 6.4.2)
std::optional<Inquiry> parseInquiry(std::span<const uint8_t> reply);

/// INQUIRY, the standard data. (SPC-3, 6.4)
std::optional<Inquiry> readInquiry(Transport& transport);

}  // namespace kelvane::mmc
