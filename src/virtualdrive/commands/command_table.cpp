// SPDX-License-Identifier: GPL-2.0-or-later
#include <algorithm>
#include <array>

#include "virtualdrive/commands/command.h"

namespace kelvane::virtualdrive {
namespace {

enum class Needs { Nothing, Medium };
/// Whether a pending unit attention comes in the way of the command (SPC-3, 5.9.7; MMC-5, 4.1.6.1).
enum class Attention { Ignored, Reported };

struct Entry {
  std::uint8_t operation;
  CommandResult (*carryOut)(Command&);
  Needs needs;
  Attention attention;
};

constexpr std::array<Entry, 32> kTable{{
    {0x00, testUnitReady, Needs::Medium, Attention::Reported},
    {0x03, requestSense, Needs::Nothing, Attention::Ignored},
    {0x04, formatUnit, Needs::Medium, Attention::Reported},
    {0x12, inquiry, Needs::Nothing, Attention::Ignored},
    {0x1A, modeSense6, Needs::Nothing, Attention::Reported},
    {0x1B, startStopUnit, Needs::Nothing, Attention::Reported},
    {0x1E, preventAllowMediumRemoval, Needs::Nothing, Attention::Reported},
    {0x23, readFormatCapacities, Needs::Nothing, Attention::Reported},
    {0x25, readCapacity, Needs::Medium, Attention::Reported},
    {0x28, read10, Needs::Medium, Attention::Reported},
    {0x2A, write10, Needs::Medium, Attention::Reported},
    {0x35, synchronizeCache, Needs::Medium, Attention::Reported},
    {0x43, readTocPmaAtip, Needs::Medium, Attention::Reported},
    {0x46, getConfiguration, Needs::Nothing, Attention::Ignored},
    {0x4A, getEventStatusNotification, Needs::Nothing, Attention::Ignored},
    {0x51, readDiscInformation, Needs::Medium, Attention::Reported},
    {0x52, readTrackInformation, Needs::Medium, Attention::Reported},
    {0x53, reserveTrack, Needs::Medium, Attention::Reported},
    {0x54, sendOpcInformation, Needs::Medium, Attention::Reported},
    {0x55, modeSelect10, Needs::Nothing, Attention::Reported},
    {0x5A, modeSense10, Needs::Nothing, Attention::Reported},
    {0x5B, closeTrackSession, Needs::Medium, Attention::Reported},
    {0x5C, readBufferCapacity, Needs::Medium, Attention::Reported},
    {0x5D, sendCueSheet, Needs::Medium, Attention::Reported},
    {0xA1, blank, Needs::Medium, Attention::Reported},
    {0xA8, read12, Needs::Medium, Attention::Reported},
    {0xAA, write12, Needs::Medium, Attention::Reported},
    {0xAC, getPerformance, Needs::Nothing, Attention::Reported},
    {0xAD, readDiscStructure, Needs::Medium, Attention::Reported},
    {0xB6, setStreaming, Needs::Nothing, Attention::Reported},
    {0xBB, setCdSpeed, Needs::Nothing, Attention::Reported},
    {0xBE, readCd, Needs::Medium, Attention::Reported},
}};

}  // namespace

CommandResult answer(Command& command, const AnswerBytes& bytes, std::size_t allocationLength) {
  const auto count = std::min({bytes.size(), allocationLength, command.dataIn.size()});
  std::ranges::copy(bytes.view().first(count), command.dataIn.begin());
  return {kGood, count};
}

CommandResult carryOut(Command& command) {
  const auto* entry = std::ranges::find(kTable, command.block[0], &Entry::operation);
  if (entry == kTable.end()) return refuse(kUnknownCommand);
  const auto& drive = command.folder.drive;
  if (drive.unitAttention && entry->attention == Attention::Reported) {
    command.changeDrive().unitAttention = false;
    return refuse(kMediumMayHaveChanged);
  }
  if (drive.trayOpen && entry->needs == Needs::Medium) return refuse(kTrayOpen);
  return entry->carryOut(command);
}

}  // namespace kelvane::virtualdrive
