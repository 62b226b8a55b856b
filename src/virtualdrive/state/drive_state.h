// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "virtualdrive/medium_kind.h"

namespace kelvane::virtualdrive {

/// What the drive would tell a program that asks for media events (MMC-5, 6.7.2.5). Told once.
enum class MediaEvent : std::uint8_t { None = 0, EjectRequest = 1, NewMedia = 2, MediaRemoval = 3 };

/// The write parameters mode page (MMC-5, 7.5) in the form programs set it.
struct WriteParameters {
  static constexpr std::size_t kBytes = 52;
  /// The whole page, its two header bytes included.
  std::array<std::uint8_t, kBytes> page{};

  enum class Type : std::uint8_t { Incremental = 0, TrackAtOnce = 1, SessionAtOnce = 2 };
  Type type() const { return static_cast<Type>(page[2] & 0x0F); }
  /// Whether closing the session leaves the disc open to a further one.
  bool multiSession() const { return (page[3] & 0xC0) == 0xC0; }
  /// By the control nibble; audio otherwise.
  bool dataTrack() const { return (page[3] & 0x04) != 0; }
  std::uint8_t dataBlockType() const { return page[4] & 0x0F; }

  /// What the drive sets by itself for a medium.
  static WriteParameters standard(MediumKind kind = MediumKind::CdR);
};

/// What the drive itself remembers.
struct DriveState {
  bool trayOpen = false;
  /// A program has locked the tray.
  bool removalPrevented = false;
  /// The next command that cares learns that the medium may have changed.
  bool unitAttention = true;
  MediaEvent mediaEvent = MediaEvent::NewMedia;
  /// Distinguishes this drive from others; letters and digits.
  std::string serial;
  /// 1000 bytes a second, as SET CD SPEED and SET STREAMING count.
  int readSpeed = 0;
  int writeSpeed = 0;
  WriteParameters writeParameters = WriteParameters::standard();
};

}  // namespace kelvane::virtualdrive
