// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/volumes/device_resolver.h"
#include "virtualdrive/shim_environment.h"

namespace kelvane::launchers {

/// What a program that opens a drive by itself, to write to it, needs for that.
struct DriveAccess {
  std::string path;  ///< The device node that the program is to be given.
  /// What its environment needs besides.
  std::vector<virtualdrive::EnvironmentVariable> environment;
  /// What is locked (flock) while somebody writes to the disc: of an emulated drive the file of its
  /// sectors, of one of this machine its folder below /sys;
  /// empty where it has none.
  std::string recordingLockPath;
};

/// The access to the drive that `name` stands for ("/dev/rkv0", "sr0"). An emulated one is shown to
/// the program by the preloaded library in `libexec`. Empty where the name stands for no drive;
/// then, and where the library is missing, `problem` has a sentence.
std::optional<DriveAccess> accessToDrive(std::string_view name,
                                         const std::vector<EmulatedDrive>& drives,
                                         const std::filesystem::path& libexec,
                                         std::string* problem);

/// Prepares this process for the program that is to take its place and write to the drive: sets the
/// environment, takes the lock (which passes to the program and ends with the last process that has
/// it), lets an inherited claim to the drive end where the program takes over (which makes its
/// own), and sees to it that the end of the application does not end the writing. False, with a
/// sentence in `problem`, where somebody writes to the disc already.
bool prepareToWrite(const DriveAccess& access, std::string* problem);

/// The folder in which this launcher, and the other auxiliary programs, lie.
std::filesystem::path ownFolder();

}  // namespace kelvane::launchers
