// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace kelvane::virtualdrive {

/// A sector's address; also a number of sectors.
using Lba = std::int32_t;

/// A sector of data.
inline constexpr std::size_t kSectorBytes = 2048;
/// A sector of audio: 588 samples of two channels (IEC 60908).
inline constexpr std::size_t kAudioSectorBytes = 2352;

enum class MediumKind { CdR, CdRw, DvdR, DvdRw, DvdPlusRw, DvdPlusR };

/// "cd-r", "cd-rw", "dvd-r", "dvd-rw", "dvd+rw", "dvd+r": the name in disc.json and on command
/// lines.
std::string_view nameOf(MediumKind kind);
std::optional<MediumKind> mediumKindNamed(std::string_view name);

constexpr bool isCd(MediumKind kind) {
  return kind == MediumKind::CdR || kind == MediumKind::CdRw;
}

/// What an 80 minute CD holds, and the most that a CD's addresses (99 minutes) allow.
inline constexpr Lba kDefaultCdCapacity = 359847;
inline constexpr Lba kMaximalCdCapacity = 445000;
/// The shortest track a CD can have, four seconds; no capacity may be smaller.
inline constexpr Lba kShortestCdTrack = 300;

/// What a single layer of 12 cm holds.
inline constexpr Lba kDvdMinusCapacity = 2298496;
inline constexpr Lba kDvdPlusCapacity = 2295104;
/// The most that any medium holds.
inline constexpr Lba kMaximalCapacity = kDvdMinusCapacity;
/// Sectors of a DVD are protected against errors, and so written, in blocks of 16.
inline constexpr Lba kDvdBlockSectors = 16;

/// The whole blocks that `sectors` begin.
constexpr Lba inWholeDvdBlocks(Lba sectors) {
  return (sectors + kDvdBlockSectors - 1) / kDvdBlockSectors * kDvdBlockSectors;
}

/// The capacity of a medium that is bought without a word about it, and the bounds of what can be
/// asked for.
struct CapacityBounds {
  Lba standard;
  Lba smallest;
  Lba largest;
};
CapacityBounds capacityBounds(MediumKind kind);

}  // namespace kelvane::virtualdrive
