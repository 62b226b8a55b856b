// SPDX-License-Identifier: GPL-2.0-or-later
#include "virtualdrive/media/dvd_minus_rw_formats.h"

#include <algorithm>

namespace kelvane::virtualdrive {
namespace {

constexpr std::uint8_t kFull = 0x00;
constexpr std::uint8_t kFullMaximumSize = 0x10;
constexpr std::uint8_t kQuickGrowLastSession = 0x13;
constexpr std::uint8_t kQuick = 0x15;

/// What a quick format writes at once; the rest comes with the data.
constexpr Lba kLeastQuickFormat = kDvdBlockSectors;

Sense growLastSession(DiscFolder& folder, Lba sectors) {
  auto& disc = folder.disc;
  if (!disc.formatting) return kIncompatibleMedium;
  auto& formatting = *disc.formatting;
  if (sectors > disc.capacity - formatting.sectors) return kInvalidFieldInParameters;
  formatting.sectors = std::min(formatting.sectors + inWholeDvdBlocks(sectors), disc.capacity);
  formatting.growing = true;
  return folder.storeDisc() ? kGood : kWriteError;
}

Sense formatAnew(DiscFolder& folder, const Formatting& formatting) {
  auto blank = folder.disc.asBlank();
  blank.formatting = formatting;
  return folder.removeEverything(blank) ? kGood : kWriteError;
}

}  // namespace

std::vector<FormatCapacities::Choice> dvdMinusRwFormats(const DiscState& disc) {
  const auto all = disc.capacity;
  const auto left = disc.formatting ? all - disc.formatting->sectors : 0;
  return {{kFull, all, kSectorBytes},
          {kFullMaximumSize, all, kDvdBlockSectors},
          {kQuickGrowLastSession, left, kDvdBlockSectors},
          {kQuick, all, kDvdBlockSectors}};
}

Sense formatDvdMinusRw(DiscFolder& folder, const FormatRequest& request) {
  const auto all = folder.disc.capacity;
  if (request.sectors > static_cast<std::uint32_t>(all)) return kInvalidFieldInParameters;
  const auto sectors = static_cast<Lba>(request.sectors);
  switch (request.type) {
    case kFull:
    case kFullMaximumSize:
      return formatAnew(folder, {all, false});
    case kQuickGrowLastSession:
      return growLastSession(folder, sectors);
    case kQuick: {
      const auto wanted = std::min(inWholeDvdBlocks(sectors), all);
      return formatAnew(folder, {std::max(wanted, kLeastQuickFormat), true});
    }
    default:
      return kInvalidFieldInParameters;
  }
}

Sense blankDvdMinusRw(DiscFolder& folder, BlankExtent extent) {
  auto blank = folder.disc.asBlank();
  blank.minimallyBlanked = extent == BlankExtent::Minimal;
  return folder.removeEverything(blank) ? kGood : kWriteError;
}

}  // namespace kelvane::virtualdrive
