// SPDX-License-Identifier: GPL-2.0-or-later
#include "virtualdrive/media/cd_layout.h"

namespace kelvane::virtualdrive {

Lba cdNextTrackStart(const DiscState& disc) {
  if (disc.openSessionHasTracks()) return disc.tracks.back().end() + kCdRunOut + kCdGap;
  if (disc.sessions.empty()) return 0;
  return disc.sessions.back().leadOut + cdLeadOutToNextSession(disc.sessions.size());
}

}  // namespace kelvane::virtualdrive
