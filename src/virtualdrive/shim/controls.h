// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "virtualdrive/shim/shown_drive.h"

namespace kelvane::virtualdrive::shim {

/// Answers an ioctl(2) on the drive as the kernel's drivers of SCSI CD-ROM drives do
/// (linux/cdrom.h, scsi/sg.h, linux/fs.h). Returns a negative errno, -ENOTTY for requests that such
/// a drive does not know, or ioctl's result.
int controlDrive(const ShownDrive& shown, unsigned long request, void* argument);

/// SG_IO: a command block for the drive.
int passThrough(const ShownDrive& shown, void* argument);

/// The requests of linux/cdrom.h; -ENOTTY for others.
int controlCdRom(const ShownDrive& shown, unsigned long request, void* argument);

}  // namespace kelvane::virtualdrive::shim
