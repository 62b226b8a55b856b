// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <cstdint>
#include <functional>
#include <span>

#include "command_ring.h"
#include "virtualdrive/virtual_drive.h"

namespace kelvane::kernelburner {

/// What an emulated drive answers to a command from the ring. Calls `onGone` each time that there
/// is no drive any more which could answer; the command is then refused with 5/25/00, as a bus does
/// for a device that was pulled out.
CommandRing::Handler answersOf(const virtualdrive::VirtualDrive& drive,
                               std::function<void()> onGone);

}  // namespace kelvane::kernelburner
