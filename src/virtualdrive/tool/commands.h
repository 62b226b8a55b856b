// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "virtualdrive/virtual_drive.h"

namespace kelvane::virtualdrive::tool {

// The exit statuses of kelvanedisc, as --help lists them.
inline constexpr int kDone = 0;
inline constexpr int kFailed = 1;
inline constexpr int kWrongUsage = 2;
inline constexpr int kDiscUnusable = 3;

/// On the command line: a DVD-RW that is formatted for restricted overwrite.
inline constexpr const char* kRestrictedOverwriteName = "dvd-rw-ro";

/// Where a disc with data has its audio tracks.
enum class AudioPlace {
  /// In the data's session, behind it: a mixed mode disc.
  BehindData,
  /// In a session of their own before the data's: an enhanced music CD.
  OwnSession
};

struct CreateOptions {
  std::filesystem::path disc;
  /// A medium's name, or kRestrictedOverwriteName.
  std::string medium;
  /// 1 MB is 512 sectors of 2048 bytes.
  std::optional<int> capacityMegabytes;
  std::optional<std::filesystem::path> from;
  std::optional<std::string> label;
  std::vector<std::filesystem::path> audio;
  AudioPlace audioPlace = AudioPlace::BehindData;
  /// Nothing can be added to the disc.
  bool closed = false;
};

enum class InfoForm { Text, Json };
enum class Tray { Insert, Eject };

// Each does its work, prints what it has to say, errors on stderr, and returns the exit status.
int createDisc(const CreateOptions& options);
int printInfo(const std::filesystem::path& disc, InfoForm form);
int listFiles(const std::filesystem::path& disc, std::optional<int> session);
int extractFiles(const std::filesystem::path& disc, const std::filesystem::path& target,
                 std::optional<int> session);
int moveTray(const std::filesystem::path& disc, Tray what, EjectManner manner);
/// Returns only where the command could not be begun (126, 127) or the disc cannot be used.
int runWithDisc(const std::filesystem::path& disc, const std::string& device,
                const std::vector<std::string>& command);

/// Prints "kelvanedisc: " and the sentence on stderr.
void complain(const std::string& sentence);

/// Opens the disc, or complains.
std::optional<VirtualDrive> openDisc(const std::filesystem::path& disc);

}  // namespace kelvane::virtualdrive::tool
