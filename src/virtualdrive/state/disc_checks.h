// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <cstdint>
#include <string>

#include "virtualdrive/state/disc_state.h"

namespace kelvane::virtualdrive {

/// Lets the growing track, if there is one, reach to the end of its file. Returns what is wrong
/// with the lengths, or "".
std::string takeFileLengths(DiscState* disc, const FileLengths& files);

/// In what a description contradicts itself or the files of sectors, in words; "" where it does
/// not. What passes can be relied on everywhere else: numbers count up, addresses rise, every
/// recorded sector is in the file, and no closed session or complete track is without data.
std::string contradictionIn(const DiscState& disc);

}  // namespace kelvane::virtualdrive
