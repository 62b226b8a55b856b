// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <cstdint>
#include <span>

#include "virtualdrive/big_endian.h"
#include "virtualdrive/command_result.h"
#include "virtualdrive/media/medium_rules.h"
#include "virtualdrive/state/disc_folder.h"

namespace kelvane::virtualdrive {

/// A command block on its way, with all that it may act on.
struct Command {
  /// 16 bytes; a shorter block is filled up with zeros.
  std::span<const std::uint8_t> block;
  std::span<std::uint8_t> dataIn;
  std::span<const std::uint8_t> dataOut;
  DiscFolder& folder;
  const MediumRules& rules;
  /// Set by whoever changes folder.drive; it is stored after the command then.
  bool driveChanged = false;

  const DiscState& disc() const { return folder.disc; }
  DriveState& changeDrive() {
    driveChanged = true;
    return folder.drive;
  }
};

/// Answers with `bytes`, cut to what the command block allows and to what the program has room for.
CommandResult answer(Command& command, const AnswerBytes& bytes, std::size_t allocationLength);

inline CommandResult refuse(const Sense& why) {
  return {why, 0};
}

// The commands, in files by subject. Each is named as in MMC-5 and SPC-3.

// identity.cpp
CommandResult inquiry(Command& command);
CommandResult getConfiguration(Command& command);

// unit.cpp
CommandResult testUnitReady(Command& command);
CommandResult requestSense(Command& command);
CommandResult startStopUnit(Command& command);
CommandResult preventAllowMediumRemoval(Command& command);
CommandResult getEventStatusNotification(Command& command);

// information.cpp
CommandResult readDiscInformation(Command& command);
CommandResult readTrackInformation(Command& command);
CommandResult readCapacity(Command& command);
CommandResult readBufferCapacity(Command& command);

// formatting.cpp
CommandResult readFormatCapacities(Command& command);
CommandResult formatUnit(Command& command);

// disc_structure.cpp
CommandResult readDiscStructure(Command& command);

// toc.cpp
CommandResult readTocPmaAtip(Command& command);

// mode.cpp
CommandResult modeSense6(Command& command);
CommandResult modeSense10(Command& command);
CommandResult modeSelect10(Command& command);

// speed.cpp
CommandResult setCdSpeed(Command& command);
CommandResult setStreaming(Command& command);
CommandResult getPerformance(Command& command);

// reading.cpp
CommandResult read10(Command& command);
CommandResult read12(Command& command);
CommandResult readCd(Command& command);

// writing.cpp
CommandResult write10(Command& command);
CommandResult write12(Command& command);
CommandResult synchronizeCache(Command& command);
CommandResult reserveTrack(Command& command);
CommandResult sendCueSheet(Command& command);
CommandResult sendOpcInformation(Command& command);
CommandResult closeTrackSession(Command& command);
CommandResult blank(Command& command);

/// Carries out any command: looks it up, answers for the tray and the unit attention, calls the one
/// above.
CommandResult carryOut(Command& command);

}  // namespace kelvane::virtualdrive
