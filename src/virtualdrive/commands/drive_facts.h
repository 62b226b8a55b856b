// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <array>
#include <string_view>

namespace kelvane::virtualdrive {

// What the drive is, wherever it has to say so.

inline constexpr std::string_view kVendor = "KELVANE";
inline constexpr std::string_view kProduct = "SOFTWARE BURNER";
inline constexpr std::string_view kRevision = "1.00";

inline constexpr int kBufferBytes = 2 * 1024 * 1024;

/// 1000 bytes a second. The data rate of a CD at single speed is 176.4 of these, counted with 2352
/// bytes a sector.
inline constexpr int kReadSpeed = 8467;
/// The write speeds, 48x to 4x, fastest first.
inline constexpr std::array<int, 5> kWriteSpeeds{8467, 7056, 4234, 2822, 706};

}  // namespace kelvane::virtualdrive
