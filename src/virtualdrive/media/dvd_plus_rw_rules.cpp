// SPDX-License-Identifier: GPL-2.0-or-later
#include "virtualdrive/media/dvd_plus_rw_rules.h"

#include "virtualdrive/media/feature_codes.h"

namespace kelvane::virtualdrive {
namespace {

constexpr std::uint8_t kBasicFormat = 0x26;
/// The format parameter that has a stopped background formatting go on.
constexpr std::uint32_t kRestart = 0x01;

BackgroundFormat backgroundFormatOf(const DiscState& disc) {
  if (!disc.formatting) return BackgroundFormat::None;
  if (disc.formatting->sectors >= disc.capacity) return BackgroundFormat::Complete;
  return disc.formatting->growing ? BackgroundFormat::Running : BackgroundFormat::Stopped;
}

}  // namespace

std::vector<std::uint16_t> DvdPlusRwRules::currentFeatures(const DiscState& disc) const {
  std::vector<std::uint16_t> features{kRandomReadable, kDvdRead, kFormattable, kDvdPlusRwSupport};
  if (disc.formatting) features.push_back(kRandomWritable);
  return features;
}

DiscSummary DvdPlusRwRules::summary(const DiscState& disc) const {
  if (!disc.formatting) return {};
  return {DiscStatus::Complete, SessionState::Complete, backgroundFormatOf(disc)};
}

FormatCapacities DvdPlusRwRules::formatCapacities(const DiscState& disc) const {
  const auto sectors = disc.formatting ? disc.formatting->sectors : disc.capacity;
  return {disc.formatting.has_value(), sectors, {{kBasicFormat, disc.capacity, 0}}};
}

/// The page means nothing to a DVD+RW (MMC-5, 7.5.3).
bool DvdPlusRwRules::accepts(const WriteParameters&) const {
  return true;
}

Sense DvdPlusRwRules::write(DiscFolder& folder, Lba first,
                            std::span<const std::uint8_t> data) const {
  const auto& disc = folder.disc;
  if (!disc.formatting) return kCannotWriteMedium;
  const auto count = static_cast<Lba>(data.size() / kSectorBytes);
  const auto limit = disc.formatting->growing ? disc.capacity : disc.formatting->sectors;
  if (first < 0 || count > limit - first) return kAddressOutOfRange;
  return overwrite(folder, first, data);
}

Sense DvdPlusRwRules::stopFormatting(DiscFolder& folder) const {
  return closeSession(folder);
}

Sense DvdPlusRwRules::format(DiscFolder& folder, const FormatRequest& request) const {
  auto& disc = folder.disc;
  if (request.type != kBasicFormat) return kInvalidFieldInParameters;
  if ((request.parameter & kRestart) != 0 && disc.formatting) {
    disc.formatting->growing = disc.formatting->sectors < disc.capacity;
    return folder.storeDisc() ? kGood : kWriteError;
  }
  auto blank = disc.asBlank();
  blank.formatting = Formatting{0, true};
  return folder.removeEverything(blank) ? kGood : kWriteError;
}

}  // namespace kelvane::virtualdrive
