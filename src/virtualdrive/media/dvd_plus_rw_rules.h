// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "virtualdrive/media/dvd_overwritable_rules.h"

namespace kelvane::virtualdrive {

/// DVD+RW: overwritten at any address once it is formatted. Formatting goes on in the background:
/// while it runs, every address of the disc takes data; stopped, the formatted area ends with the
/// data that lies outermost, and formatting has to be restarted to write behind it.
class DvdPlusRwRules final : public DvdOverwritableRules {
 public:
  std::uint16_t profile() const override { return 0x001A; }
  std::vector<std::uint16_t> currentFeatures(const DiscState& disc) const override;
  DiscSummary summary(const DiscState& disc) const override;
  FormatCapacities formatCapacities(const DiscState& disc) const override;
  bool accepts(const WriteParameters& parameters) const override;

  Sense write(DiscFolder& folder, Lba first, std::span<const std::uint8_t> data) const override;
  Sense stopFormatting(DiscFolder& folder) const override;
  Sense format(DiscFolder& folder, const FormatRequest& request) const override;
};

}  // namespace kelvane::virtualdrive
