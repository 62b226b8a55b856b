// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "virtualdrive/media/dvd_overwritable_rules.h"

namespace kelvane::virtualdrive {

/// DVD-RW in restricted overwrite mode: one session, which can be overwritten in whole blocks and,
/// while it is in its intermediate state, grows where data is written right behind it.
class DvdRestrictedOverwriteRules final : public DvdOverwritableRules {
 public:
  std::uint16_t profile() const override { return 0x0013; }
  std::vector<std::uint16_t> currentFeatures(const DiscState& disc) const override;
  std::vector<TrackView> tracks(const DiscState& disc) const override;
  DiscSummary summary(const DiscState& disc) const override;
  FormatCapacities formatCapacities(const DiscState& disc) const override;
  bool accepts(const WriteParameters& parameters) const override;

  Sense write(DiscFolder& folder, Lba first, std::span<const std::uint8_t> data) const override;
  Sense blank(DiscFolder& folder, BlankExtent extent) const override;
  Sense format(DiscFolder& folder, const FormatRequest& request) const override;
};

}  // namespace kelvane::virtualdrive
