// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "platform/recording/mmc_transport.h"

namespace kelvane::mmc {

/// PREVENT ALLOW MEDIUM REMOVAL: lets the tray be opened again that somebody locked. (MMC-5, 6.14)
Answer allowMediumRemoval(Transport& transport);

/// START STOP UNIT, which opens the tray, once it is allowed to. (MMC-5, 6.42)
Answer openTray(Transport& transport);

/// START STOP UNIT, which closes the tray and takes the disc in. (MMC-5, 6.42)
Answer closeTray(Transport& transport);

}  // namespace kelvane::mmc
