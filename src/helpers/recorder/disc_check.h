// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <cstdint>
#include <string>

#include "platform/recording/mmc_transport.h"

namespace burn {
struct burn_drive;
struct burn_write_opts;
}  // namespace burn

namespace kelvane::recorder {

/// Looks at the image: a sentence where it is missing, empty or larger than a track's producer can
/// deliver; else empty, with its size in `bytes`.
std::string whyImageCannotBeWritten(const std::string& path, int64_t& bytes);

/// Asks the drive whether the disc's last session was begun and never finished: a sentence where it
/// was; else empty. What is written then becomes part of that session, and an image would not begin
/// where readers look for it. libburn does not tell, so this is asked before the drive is grabbed.
std::string whySessionCannotBegin(mmc::Transport& transport);

/// Waits, for a minute at most, until the drive has found out what disc is in it.
void waitUntilDiscIsKnown(burn::burn_drive* drive);

/// Looks at the disc in the drive: a sentence where it is missing or closed; else empty.
std::string whyDiscCannotBeWritten(burn::burn_drive* drive);

/// A sentence where a session of `blocks` blocks does not fit on the disc with these options; else
/// empty.
std::string whySessionDoesNotFit(burn::burn_drive* drive, burn::burn_write_opts* options,
                                 int64_t blocks);

}  // namespace kelvane::recorder
