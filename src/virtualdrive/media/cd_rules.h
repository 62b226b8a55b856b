// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "virtualdrive/media/medium_rules.h"

namespace kelvane::virtualdrive {

/// CD-R and CD-RW: tracks written one after the other, at once or a session at once; data tracks of
/// 2048 bytes a sector, and audio tracks of 2352. A CD-RW follows the same rules until it is
/// blanked.
class CdRules final : public MediumRules {
 public:
  enum class Kind { WriteOnce, Rewritable };
  explicit CdRules(Kind kind) : kind_(kind) {}

  std::uint16_t profile() const override { return erasable() ? 0x000A : 0x0009; }
  bool erasable() const override { return kind_ == Kind::Rewritable; }
  std::vector<std::uint16_t> currentFeatures(const DiscState& disc) const override;
  std::vector<TrackView> tracks(const DiscState& disc) const override;
  bool accepts(const WriteParameters& parameters) const override;

  std::size_t blockBytes(const DiscFolder& folder, Lba first) const override;
  Sense write(DiscFolder& folder, Lba first, std::span<const std::uint8_t> data) const override;
  Sense endWriting(DiscFolder& folder) const override;
  Sense reserveTrack(DiscFolder& folder, Lba sectors) const override;
  Sense takeCueSheet(DiscFolder& folder, std::span<const std::uint8_t> sheet) const override;
  Sense closeTrack(DiscFolder& folder, int number) const override;
  Sense closeSession(DiscFolder& folder) const override;
  Sense blank(DiscFolder& folder, BlankExtent extent) const override;

 private:
  Kind kind_;
};

}  // namespace kelvane::virtualdrive
