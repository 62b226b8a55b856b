// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "virtualdrive/tool/commands.h"
#include "virtualdrive/tool/session_writer.h"
#include "virtualdrive/tool/stop_signals.h"
#include "virtualdrive/virtual_drive.h"

namespace kelvane::virtualdrive::tool {

/// What a disc begins with.
struct FirstContent {
  /// A folder whose content becomes a data track.
  std::optional<std::filesystem::path> folder;
  /// The name of its volume.
  std::string label;
  /// Sound files, each of which becomes an audio track: samples of 16 bits, little-endian, two
  /// channels, 44,100 a second, with nothing before them.
  std::vector<std::filesystem::path> audio;
  AudioPlace audioPlace = AudioPlace::BehindData;
  SessionEnd end = SessionEnd::Appendable;
};

/// Writes it to a blank disc. Ends early, with an error, when `stop` asks for it.
bool writeFirstContent(const VirtualDrive& drive, const FirstContent& content,
                       const StopSignals& stop, std::string* error);

}  // namespace kelvane::virtualdrive::tool
