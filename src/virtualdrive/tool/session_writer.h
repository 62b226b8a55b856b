// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "virtualdrive/virtual_drive.h"

namespace kelvane::virtualdrive::tool {

/// Formats a blank DVD-RW for restricted overwrite, the quick way.
bool formatForRestrictedOverwrite(const VirtualDrive& drive, std::string* error);

/// Writes one track to the end of a disc, or from LBA 0 to a formatted one, and closes its session
/// so that more can follow, by the drive's own command blocks as any burning program does. A DVD+RW
/// is formatted first.
class SessionWriter {
 public:
  /// `drive` is borrowed.
  explicit SessionWriter(const VirtualDrive& drive) : drive_(drive) {}

  /// Sets the write parameters and asks where to write.
  bool begin(std::string* error);
  /// Takes whole sectors; the last ones of a DVD are followed by zeros up to a whole block.
  bool write(std::span<const std::uint8_t> sectors, std::string* error);
  /// Ends track and session; the disc stays appendable.
  bool close(std::string* error);

 private:
  bool askForProfile(std::string* error);
  bool setParameters(std::string* error);

  const VirtualDrive& drive_;
  std::uint16_t profile_ = 0;
  Lba next_ = 0;
};

}  // namespace kelvane::virtualdrive::tool
