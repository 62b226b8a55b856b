// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "virtualdrive/virtual_drive.h"

namespace kelvane::virtualdrive::tool {

/// Writes one track at once to the end of a disc and closes its session so that more can follow, by
/// the drive's own command blocks as any burning program does.
class SessionWriter {
 public:
  /// `drive` is borrowed.
  explicit SessionWriter(const VirtualDrive& drive) : drive_(drive) {}

  /// Sets the write parameters and asks where to write.
  bool begin(std::string* error);
  /// Takes whole sectors.
  bool write(std::span<const std::uint8_t> sectors, std::string* error);
  /// Ends track and session; the disc stays appendable.
  bool close(std::string* error);

 private:
  bool becomeReady(std::string* error);
  bool setParameters(std::string* error);

  const VirtualDrive& drive_;
  Lba next_ = 0;
};

}  // namespace kelvane::virtualdrive::tool
