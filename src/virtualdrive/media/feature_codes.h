// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <cstdint>

namespace kelvane::virtualdrive {

// The features of the drive that depend on the disc in it (MMC-5, 5.3).
inline constexpr std::uint16_t kRandomReadable = 0x0010;
inline constexpr std::uint16_t kCdRead = 0x001E;
inline constexpr std::uint16_t kDvdRead = 0x001F;
inline constexpr std::uint16_t kRandomWritable = 0x0020;
inline constexpr std::uint16_t kIncrementalStreamingWritable = 0x0021;
inline constexpr std::uint16_t kFormattable = 0x0023;
inline constexpr std::uint16_t kRestrictedOverwrite = 0x0026;
inline constexpr std::uint16_t kDvdPlusRwSupport = 0x002A;
inline constexpr std::uint16_t kDvdPlusRSupport = 0x002B;
inline constexpr std::uint16_t kRigidRestrictedOverwrite = 0x002C;
inline constexpr std::uint16_t kCdTrackAtOnce = 0x002D;
inline constexpr std::uint16_t kCdMastering = 0x002E;
inline constexpr std::uint16_t kDvdMinusWrite = 0x002F;
inline constexpr std::uint16_t kCdRwMediaWrite = 0x0037;

}  // namespace kelvane::virtualdrive
