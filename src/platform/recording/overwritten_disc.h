// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "platform/recording/mmc_transport.h"

namespace kelvane {

/// Whether nothing is found on a disc that is overwritten at will: its first 32 blocks hold zeros,
/// or lie beyond what is formatted.
///
/// Such a disc (DVD+RW) is formatted once and complete from then on, so the drive cannot tell
/// whether anything is recorded on it; what programs look for can. Every volume is announced there:
/// ISO-9660 by its descriptors from block 16 on, UDF by its recognition sequence in the same place,
/// the file systems of hard discs and archives in the blocks before. A block that cannot be read
/// for another reason may hold anything, so the disc is not empty then.
bool overwrittenDiscIsEmpty(mmc::Transport& transport);

}  // namespace kelvane
