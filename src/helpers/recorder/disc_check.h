// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <cstdint>
#include <string>

namespace burn {
struct burn_drive;
struct burn_write_opts;
}  // namespace burn

namespace kelvane::recorder {

/// Looks at the image: a sentence where it is missing, empty or larger than a track's producer can
/// deliver; else empty, with its size in `bytes`.
std::string whyImageCannotBeWritten(const std::string& path, int64_t& bytes);

/// Looks at the disc in the drive: a sentence where it is missing or closed; else empty.
std::string whyDiscCannotBeWritten(burn::burn_drive* drive);

/// A sentence where a session of `blocks` blocks does not fit on the disc with these options; else
/// empty.
std::string whySessionDoesNotFit(burn::burn_drive* drive, burn::burn_write_opts* options,
                                 int64_t blocks);

}  // namespace kelvane::recorder
