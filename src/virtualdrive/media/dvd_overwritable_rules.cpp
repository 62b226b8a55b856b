// SPDX-License-Identifier: GPL-2.0-or-later
#include "virtualdrive/media/dvd_overwritable_rules.h"

#include <algorithm>

namespace kelvane::virtualdrive {

std::vector<TrackView> DvdOverwritableRules::tracks(const DiscState& disc) const {
  TrackView view;
  view.invisible = !disc.formatting || disc.formatting->sectors == 0;
  if (!disc.formatting) {
    view.size = view.free = disc.capacity;
    return {view};
  }
  view.size = view.recorded = disc.formatting->sectors;
  view.complete = !disc.formatting->growing;
  if (disc.formatting->growing) view.free = disc.capacity - view.size;
  return {view};
}

std::vector<SessionView> DvdOverwritableRules::sessions(const DiscState& disc) const {
  if (!disc.formatting || disc.formatting->sectors == 0) return {};
  return {{1, 1, 1, 0, disc.formatting->sectors}};
}

Sense DvdOverwritableRules::checkReadable(const DiscState& disc, Lba first, Lba count) const {
  const auto end = disc.formatting ? disc.formatting->sectors : 0;
  return first < 0 || count > end - first ? kAddressOutOfRange : kGood;
}

Sense DvdOverwritableRules::overwrite(DiscFolder& folder, Lba first,
                                      std::span<const std::uint8_t> data) {
  auto& disc = folder.disc;
  if (!folder.sectors().write(first, data)) return kWriteError;
  const auto end = first + static_cast<Lba>(data.size() / kSectorBytes);
  disc.fileSectors = std::max(disc.fileSectors, end);
  // Not stored: whoever loads a growing disc takes it from the file.
  if (disc.formatting->growing) {
    const auto reached = std::min(inWholeDvdBlocks(end), disc.capacity);
    disc.formatting->sectors = std::max(disc.formatting->sectors, reached);
  }
  return kGood;
}

Sense DvdOverwritableRules::closeSession(DiscFolder& folder) const {
  auto& disc = folder.disc;
  if (!disc.formatting || !disc.formatting->growing) return kGood;
  disc.formatting->growing = false;
  return folder.storeDisc() ? kGood : kWriteError;
}

}  // namespace kelvane::virtualdrive
