// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "virtualdrive/shim/shown_drive.h"

namespace kelvane::virtualdrive::shim {

/// Opens the drive with the flags of open(2): a descriptor of the file of sectors, for reading only
/// whatever was asked, so that write(2) cannot go past the rules of the medium. Who opens does not
/// hear of a change of the medium any more. -1 with errno ENOMEDIUM where the tray is open and the
/// caller insists on a medium (no O_NONBLOCK). Both as the kernel does it.
int openDrive(const ShownDrive& shown, int flags);

}  // namespace kelvane::virtualdrive::shim
