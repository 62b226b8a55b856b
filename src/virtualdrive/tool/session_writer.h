// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "virtualdrive/virtual_drive.h"

namespace kelvane::virtualdrive::tool {

/// Formats a blank DVD-RW for restricted overwrite, the quick way.
bool formatForRestrictedOverwrite(const VirtualDrive& drive, std::string* error);

/// What may follow a session.
enum class SessionEnd { Appendable, ForGood };

/// Writes the tracks of a session to the end of a disc, or one from LBA 0 to a formatted one, by
/// the drive's own command blocks as any burning program does. A DVD+RW is formatted first.
class SessionWriter {
 public:
  /// `drive` is borrowed.
  SessionWriter(const VirtualDrive& drive, SessionEnd end) : drive_(drive), end_(end) {}

  /// Begins a track: sets the write parameters and asks where to write. Audio is for CDs.
  bool begin(TrackForm form, std::string* error);
  /// Takes whole sectors; the last ones of a DVD are followed by zeros up to a whole block.
  bool write(std::span<const std::uint8_t> sectors, std::string* error);
  /// Where the next sector goes.
  Lba next() const { return next_; }
  bool endTrack(std::string* error);
  bool closeSession(std::string* error);

 private:
  bool askForProfile(std::string* error);
  bool setParameters(std::string* error);
  bool isFormatted() const;

  const VirtualDrive& drive_;
  SessionEnd end_;
  TrackForm form_ = TrackForm::Mode1;
  std::uint16_t profile_ = 0;
  Lba next_ = 0;
};

}  // namespace kelvane::virtualdrive::tool
