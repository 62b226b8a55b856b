// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <chrono>
#include <string>

#include "platform/desktop/patience.h"

/// The desktop's disc service (org.freedesktop.UDisks2), which mounts discs for those who may not
/// do it themselves. (What it has mounted, umount(8) asks it to unmount.) Any thread whose event
/// loop is not turning.
namespace kelvane::desktop {

enum class DiscServiceAnswer {
  Done,
  AlreadyMounted,
  Refused,     ///< This user may not, or it cannot be done.
  Unanswered,  ///< It takes its time, and may still mount the disc.
  Absent,      ///< There is no such service, or it does not know the drive or its volume.
};

/// Mounts the disc in the drive of this kernel name ("sr0") where the desktop has its volumes, and
/// waits for it. No one is asked for a password.
DiscServiceAnswer mountThroughDiscService(const std::string& drive,
                                          std::chrono::milliseconds patience = kPatience);

}  // namespace kelvane::desktop
