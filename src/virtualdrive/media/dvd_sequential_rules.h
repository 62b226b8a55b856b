// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "virtualdrive/media/medium_rules.h"

namespace kelvane::virtualdrive {

/// DVD-R, DVD-RW in sequential mode, and DVD+R: tracks written one after the other in whole blocks,
/// in sessions with a zone of lead-out and lead-in between them. A blank DVD-R or DVD-RW can be
/// written disc at once instead, in one session that ends with its data.
class DvdSequentialRules final : public MediumRules {
 public:
  enum class Kind { DvdR, DvdRw, DvdPlusR };
  explicit DvdSequentialRules(Kind kind) : kind_(kind) {}

  std::uint16_t profile() const override;
  bool erasable() const override { return kind_ == Kind::DvdRw; }
  std::vector<std::uint16_t> currentFeatures(const DiscState& disc) const override;
  std::vector<TrackView> tracks(const DiscState& disc) const override;
  FormatCapacities formatCapacities(const DiscState& disc) const override;
  bool accepts(const WriteParameters& parameters) const override;

  Sense write(DiscFolder& folder, Lba first, std::span<const std::uint8_t> data) const override;
  Sense endWriting(DiscFolder& folder) const override;
  Sense reserveTrack(DiscFolder& folder, Lba sectors) const override;
  Sense closeTrack(DiscFolder& folder, int number) const override;
  Sense closeSession(DiscFolder& folder) const override;
  Sense finalize(DiscFolder& folder) const override;
  Sense blank(DiscFolder& folder, BlankExtent extent) const override;
  Sense format(DiscFolder& folder, const FormatRequest& request) const override;

 private:
  enum class Future { Appendable, Closed };

  /// The write parameters page means nothing to a DVD+R (MMC-5, 7.5.3).
  bool followsWriteParameters() const { return kind_ != Kind::DvdPlusR; }
  bool writesAtOnce(const DiscFolder& folder) const;
  Sense checkWayOfWriting(const DiscFolder& folder) const;
  Lba nextTrackStart(const DiscState& disc) const;
  Sense complete(DiscFolder& folder, Track& track) const;
  Sense close(DiscFolder& folder, Future future) const;
  Future futureBySettings(const DiscFolder& folder) const;

  Kind kind_;
};

}  // namespace kelvane::virtualdrive
