// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "virtualdrive/media/medium_rules.h"

namespace kelvane::virtualdrive {

/// What formatted DVDs have in common. They show one session with one track: the formatted area,
/// which can be read throughout and overwritten. What was never written in it is zeros.
class DvdOverwritableRules : public MediumRules {
 public:
  bool erasable() const override { return true; }
  std::vector<TrackView> tracks(const DiscState& disc) const override;
  std::vector<SessionView> sessions(const DiscState& disc) const override;
  Sense checkReadable(const DiscState& disc, Lba first, Lba count) const override;
  /// Writes the lead-out behind the formatted area, which ends its growing.
  Sense closeSession(DiscFolder& folder) const override;

 protected:
  /// Writes sectors, and makes a growing area longer by it. The caller has checked the address.
  static Sense overwrite(DiscFolder& folder, Lba first, std::span<const std::uint8_t> data);
};

}  // namespace kelvane::virtualdrive
