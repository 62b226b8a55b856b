// SPDX-License-Identifier: GPL-2.0-or-later
// The drive's readiness, its tray and its events.
#include <optional>

#include "virtualdrive/commands/command.h"
#include "virtualdrive/state/tray.h"

namespace kelvane::virtualdrive {
namespace {

// Classes of events (MMC-5, 6.7.2).
constexpr unsigned kOperationalChange = 1;
constexpr unsigned kPower = 2;
constexpr unsigned kExternalRequest = 3;
constexpr unsigned kMedia = 4;
constexpr unsigned kDeviceBusy = 6;
constexpr unsigned kSupportedClasses = 1U << kOperationalChange | 1U << kPower |
                                       1U << kExternalRequest | 1U << kMedia | 1U << kDeviceBusy;

/// The most important class among those asked for that has something to tell, else the most
/// important one.
std::optional<unsigned> classToReport(unsigned requested, bool mediaPending) {
  if (mediaPending && (requested & 1U << kMedia) != 0) return kMedia;
  for (unsigned number = 0; number < 8; ++number) {
    if ((requested & kSupportedClasses & 1U << number) != 0) return number;
  }
  return std::nullopt;
}

}  // namespace

// MMC-5, 6.50 and SPC-3, 6.33. The table has answered already where the tray is open.
CommandResult testUnitReady(Command&) {
  return {};
}

// SPC-3, 6.27: the sense of the last command went with it, so there is only what is pending.
CommandResult requestSense(Command& command) {
  Sense sense;
  if (command.folder.drive.unitAttention) {
    command.changeDrive().unitAttention = false;
    sense = kMediumMayHaveChanged;
  } else if (command.folder.drive.trayOpen) {
    sense = kTrayOpen;
  }
  AnswerBytes bytes;
  bytes.bytes(fixedFormat(sense));
  return answer(command, bytes, command.block[4]);
}

// MMC-5, 6.42
CommandResult startStopUnit(Command& command) {
  const auto action = command.block[4];
  if ((action & 0xF0) != 0) return {};  // power conditions: always active
  const bool loadOrEject = (action & 0x02) != 0;
  const bool start = (action & 0x01) != 0;
  if (!loadOrEject) return {};
  if (start) {
    if (loadTray(command.folder.drive)) command.driveChanged = true;
    return {};
  }
  if (command.folder.drive.removalPrevented) return refuse(kRemovalPrevented);
  if (openTray(command.folder.drive)) command.driveChanged = true;
  return {};
}

// MMC-5, 6.16. The persistent form is not supported, as the removable medium feature says.
CommandResult preventAllowMediumRemoval(Command& command) {
  const auto form = command.block[4] & 0x03;
  if (form > 1) return refuse(kInvalidFieldInCommand);
  const bool prevent = form == 1;
  if (prevent && command.folder.drive.trayOpen) return refuse(kTrayOpen);
  if (command.folder.drive.removalPrevented != prevent) {
    command.changeDrive().removalPrevented = prevent;
  }
  return {};
}

// MMC-5, 6.7: polled only.
CommandResult getEventStatusNotification(Command& command) {
  if ((command.block[1] & 0x01) == 0) return refuse(kInvalidFieldInCommand);
  const auto& drive = command.folder.drive;
  const auto allocation = read16(command.block, 7);
  const bool pending = drive.mediaEvent != MediaEvent::None;
  const auto reported = classToReport(command.block[4], pending);
  AnswerBytes bytes;
  if (!reported) {
    bytes.u16(2).u8(0x80).u8(kSupportedClasses);
    return answer(command, bytes, allocation);
  }
  bytes.u16(6).u8(*reported).u8(kSupportedClasses);
  if (*reported == kMedia) {
    bytes.u8(static_cast<unsigned>(drive.mediaEvent)).u8(drive.trayOpen ? 0x01 : 0x02).u16(0);
    if (pending && allocation > 4) command.changeDrive().mediaEvent = MediaEvent::None;
  } else if (*reported == kPower) {
    bytes.u8(0).u8(1).u16(0);
  } else {
    bytes.u32(0);
  }
  return answer(command, bytes, allocation);
}

}  // namespace kelvane::virtualdrive
