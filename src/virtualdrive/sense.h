// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <array>
#include <cstdint>

namespace kelvane::virtualdrive {

/// Why a command was not carried out: sense key, additional sense code and its qualifier
/// (SPC-3, 4.5; MMC-5, annex F). All three zero means that nothing is wrong.
struct Sense {
  std::uint8_t key = 0;
  std::uint8_t code = 0;
  std::uint8_t qualifier = 0;

  constexpr bool good() const { return key == 0; }
  constexpr bool operator==(const Sense&) const = default;
};

inline constexpr Sense kGood{};
inline constexpr Sense kTrayOpen{0x2, 0x3A, 0x02};
inline constexpr Sense kWriteError{0x3, 0x0C, 0x00};
inline constexpr Sense kUnrecoveredRead{0x3, 0x11, 0x00};
inline constexpr Sense kDescriptionDamaged{0x4, 0x44, 0x00};
inline constexpr Sense kUnknownCommand{0x5, 0x20, 0x00};
inline constexpr Sense kAddressOutOfRange{0x5, 0x21, 0x00};
inline constexpr Sense kInvalidAddressForWrite{0x5, 0x21, 0x02};
inline constexpr Sense kInvalidFieldInCommand{0x5, 0x24, 0x00};
inline constexpr Sense kInvalidFieldInParameters{0x5, 0x26, 0x00};
inline constexpr Sense kParameterListLength{0x5, 0x1A, 0x00};
inline constexpr Sense kCommandSequence{0x5, 0x2C, 0x00};
inline constexpr Sense kIncompatibleMedium{0x5, 0x30, 0x00};
inline constexpr Sense kCannotWriteMedium{0x5, 0x30, 0x05};
inline constexpr Sense kSavingNotSupported{0x5, 0x39, 0x00};
inline constexpr Sense kRemovalPrevented{0x5, 0x53, 0x02};
inline constexpr Sense kEndOfUserArea{0x5, 0x63, 0x00};
inline constexpr Sense kIllegalModeForTrack{0x5, 0x64, 0x00};
inline constexpr Sense kIncompleteTrackInSession{0x5, 0x72, 0x03};
inline constexpr Sense kReservedTrackNotFull{0x5, 0x72, 0x04};
inline constexpr Sense kNoMoreTracks{0x5, 0x72, 0x05};
inline constexpr Sense kMediumMayHaveChanged{0x6, 0x28, 0x00};

/// The sense in fixed format, 18 bytes, as SG_IO and REQUEST SENSE deliver it (SPC-3, 4.5.3).
constexpr std::array<std::uint8_t, 18> fixedFormat(const Sense& sense) {
  std::array<std::uint8_t, 18> bytes{};
  bytes[0] = 0x70;
  bytes[2] = sense.key;
  bytes[7] = 10;
  bytes[12] = sense.code;
  bytes[13] = sense.qualifier;
  return bytes;
}

}  // namespace kelvane::virtualdrive
