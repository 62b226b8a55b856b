// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "virtualdrive/media/medium_rules.h"

namespace kelvane::virtualdrive {

/// DVD+RW: overwritten at any address once it is formatted. Formatting goes on in the background:
/// while it runs, every address of the disc takes data; stopped, the formatted area ends with the
/// data that lies outermost, and formatting has to be restarted to write behind it.
class DvdPlusRwRules final : public MediumRules {
 public:
  std::uint16_t profile() const override { return 0x001A; }
  bool erasable() const override { return true; }
  std::vector<std::uint16_t> currentFeatures(const DiscState& disc) const override;
  std::vector<TrackView> tracks(const DiscState& disc) const override;
  std::vector<SessionView> sessions(const DiscState& disc) const override;
  DiscSummary summary(const DiscState& disc) const override;
  FormatCapacities formatCapacities(const DiscState& disc) const override;
  Sense checkReadable(const DiscState& disc, Lba first, Lba count) const override;
  bool accepts(const WriteParameters& parameters) const override;

  Sense write(DiscFolder& folder, Lba first, std::span<const std::uint8_t> data) const override;
  Sense closeSession(DiscFolder& folder) const override;
  Sense stopFormatting(DiscFolder& folder) const override;
  Sense format(DiscFolder& folder, const FormatRequest& request) const override;
};

}  // namespace kelvane::virtualdrive
