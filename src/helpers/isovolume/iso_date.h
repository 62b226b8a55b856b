// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <cstdint>

#include "helpers/isovolume/block_source.h"

namespace kelvane::isovolume {

inline constexpr std::size_t kShortDateSize = 7;
inline constexpr std::size_t kLongDateSize = 17;

/// Seconds since 1970 UTC of a date of kShortDateSize bytes (ECMA-119, 9.1.5). 0 when it is no
/// date.
std::int64_t secondsOfShortDate(Bytes date);

/// Seconds since 1970 UTC of a date of kLongDateSize bytes, mostly digits (ECMA-119, 8.4.26.1). 0
/// when it is no date.
std::int64_t secondsOfLongDate(Bytes date);

}  // namespace kelvane::isovolume
