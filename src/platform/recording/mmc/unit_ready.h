// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "platform/recording/mmc_transport.h"

namespace kelvane::mmc {

/// What a drive says when asked whether its disc can be used.
enum class Readiness {
  Ready,
  BecomingReady,  ///< It takes the disc in, or works on it; asking again later will do.
  NoDisc,         ///< No disc, or the tray is open.
  Unusable,       ///< There is a disc, but the drive cannot use it.
  Unreachable,    ///< The drive does not answer.
};

/// Interprets the answer to TEST UNIT READY.
Readiness readinessFrom(const Answer& answer);

/// TEST UNIT READY (SPC-3, 6.33; the sense codes are those of MMC-5, annex F).
Readiness testUnitReady(Transport& transport);

}  // namespace kelvane::mmc
