// SPDX-License-Identifier: GPL-2.0-or-later
#include "virtualdrive/media/dvd_restricted_overwrite_rules.h"

#include "virtualdrive/media/dvd_minus_rw_formats.h"
#include "virtualdrive/media/feature_codes.h"

namespace kelvane::virtualdrive {

std::vector<std::uint16_t> DvdRestrictedOverwriteRules::currentFeatures(const DiscState&) const {
  return {kRandomReadable, kDvdRead, kFormattable, kRestrictedOverwrite, kRigidRestrictedOverwrite};
}

std::vector<TrackView> DvdRestrictedOverwriteRules::tracks(const DiscState& disc) const {
  constexpr std::uint8_t kFixedPackets = 0x30;
  auto views = DvdOverwritableRules::tracks(disc);
  auto& area = views.front();
  area.stateBits = kFixedPackets;
  if (area.free > 0) area.nextWritable = area.size;
  return views;
}

DiscSummary DvdRestrictedOverwriteRules::summary(const DiscState& disc) const {
  if (disc.formatting->growing) return {DiscStatus::Appendable, SessionState::Incomplete};
  return {DiscStatus::Complete, SessionState::Complete};
}

FormatCapacities DvdRestrictedOverwriteRules::formatCapacities(const DiscState& disc) const {
  return {true, disc.formatting->sectors, dvdMinusRwFormats(disc)};
}

/// The page decides nothing in this mode (MMC-5, 7.5.3).
bool DvdRestrictedOverwriteRules::accepts(const WriteParameters& parameters) const {
  const bool simulated = (parameters.page[2] & 0x10) != 0;
  return !simulated && parameters.dataBlockType() == 8;
}

Sense DvdRestrictedOverwriteRules::write(DiscFolder& folder, Lba first,
                                         std::span<const std::uint8_t> data) const {
  const auto& disc = folder.disc;
  const auto count = static_cast<Lba>(data.size() / kSectorBytes);
  if (first < 0 || first % kDvdBlockSectors != 0 || count % kDvdBlockSectors != 0) {
    return kInvalidAddressForWrite;
  }
  if (first > disc.formatting->sectors) return kInvalidAddressForWrite;
  const auto limit = disc.formatting->growing ? disc.capacity : disc.formatting->sectors;
  if (count > limit - first) {
    return disc.formatting->growing ? kEndOfUserArea : kAddressOutOfRange;
  }
  return overwrite(folder, first, data);
}

Sense DvdRestrictedOverwriteRules::blank(DiscFolder& folder, BlankExtent extent) const {
  return blankDvdMinusRw(folder, extent);
}

Sense DvdRestrictedOverwriteRules::format(DiscFolder& folder, const FormatRequest& request) const {
  return formatDvdMinusRw(folder, request);
}

}  // namespace kelvane::virtualdrive
