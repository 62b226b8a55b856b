// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <string>

#include "platform/recording/media_state.h"
#include "platform/recording/mmc_transport.h"

namespace kelvane::recorder {

/// How a disc becomes blank again.
enum class EraseMethod {
  None,  ///< It is blank.
  /// The drive's own command, which leaves a disc that can be recorded on from its beginning.
  Blank,
  /// The beginning is overwritten with zeros. A DVD+RW knows neither sessions nor blanking: it is
  /// formatted once in its life and then takes any block at any time, so formatting it again would
  /// leave the old volume readable. Without its first blocks nobody finds a volume on it.
  OverwriteBeginning,
};

/// What stands at the beginning of a disc, in blocks of 2048 bytes, by which a volume is found:
/// system area, the volume descriptors of ISO-9660 and the recognition sequence of UDF from block
/// 16 on, the anchor of UDF at 256 (ECMA-119 6.2; ECMA-167 3/8.4). A multiple of the 16 blocks that
/// a DVD writes at once.
inline constexpr int kVolumeDescriptionBlocks = 272;

/// Decides by what the drive says of its disc. A sentence in `refusal` where the disc cannot be
/// erased; the method then means nothing.
EraseMethod eraseMethodFor(mmc::Transport& transport, std::string& refusal);

}  // namespace kelvane::recorder
