// SPDX-License-Identifier: GPL-2.0-or-later
#include "helpers/launchers/drive_access.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <system_error>
#include <thread>

#include "platform/recording/drive_claim.h"

namespace kelvane::launchers {
namespace {

const std::string kBlockDevices = "/sys/class/block/";

// Whoever only looks whether the lock is free holds it for a moment, so it is tried for a second.
// The descriptor is closed neither here nor when the program takes over.
bool lockForRecording(const std::string& path) {
  constexpr int kTries = 50;
  constexpr std::chrono::milliseconds kPause{20};
  const int descriptor = open(path.c_str(), O_RDONLY);
  if (descriptor < 0) return false;
  for (int tries = 0; tries < kTries; ++tries) {
    if (flock(descriptor, LOCK_EX | LOCK_NB) == 0) return true;
    std::this_thread::sleep_for(kPause);
  }
  close(descriptor);
  return false;
}

// A program ends where what it writes to has no reader any more. The pipe that this opens to itself
// stays readable for as long as the program runs, and is made to hold all that it can have to say.
void keepReadable(int outputDescriptor) {
  constexpr int kRoomBytes = 1 << 20;
  struct stat status = {};
  if (fstat(outputDescriptor, &status) != 0 || !S_ISFIFO(status.st_mode)) return;
  fcntl(outputDescriptor, F_SETPIPE_SZ, kRoomBytes);
  const std::string path = "/proc/self/fd/" + std::to_string(outputDescriptor);
  static_cast<void>(open(path.c_str(), O_RDONLY | O_NONBLOCK));
}

// A recording cannot be taken back. What goes to the application's whole session (a terminal's
// Ctrl-C, a log-out) does not reach another one; the program keeps ignoring the signals as long as
// it has no use for them (growisofs ends on most of them).
void outliveTheApplication() {
  setsid();
  for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGPIPE, SIGQUIT}) std::signal(number, SIG_IGN);
  keepReadable(STDOUT_FILENO);
  keepReadable(STDERR_FILENO);
}

}  // namespace

std::optional<DriveAccess> accessToDrive(std::string_view name,
                                         const std::vector<EmulatedDrive>& drives,
                                         const std::filesystem::path& libexec,
                                         std::string* problem) {
  const auto device = resolveDevice(name, drives);
  if (!device) {
    *problem = std::string(name) + " is not a drive.";
    return std::nullopt;
  }
  DriveAccess access;
  access.path = device->path;
  if (device->kind == ResolvedDevice::Kind::LinuxDevice) {
    const std::string folder = kBlockDevices + device->path.substr(device->path.rfind('/') + 1);
    std::error_code failure;
    // The program says itself that there is no such drive.
    if (std::filesystem::exists(folder, failure)) access.recordingLockPath = folder;
    return access;
  }
  access.path = virtualdrive::kDefaultShownDevice;
  access.recordingLockPath = device->path;
  auto environment =
      virtualdrive::shimEnvironment(libexec, device->discFolder, access.path, problem);
  if (!environment) return std::nullopt;
  access.environment = *std::move(environment);
  return access;
}

bool prepareToWrite(const DriveAccess& access, std::string* problem) {
  if (!access.recordingLockPath.empty() && !lockForRecording(access.recordingLockPath)) {
    *problem = "The disc in " + access.path + " is being written to, or its sectors are missing.";
    return false;
  }
  for (const auto& [name, value] : access.environment) setenv(name.c_str(), value.c_str(), 1);
  endInheritedClaimAtExec(access.path);
  outliveTheApplication();
  return true;
}

std::filesystem::path ownFolder() {
  std::error_code failure;
  return std::filesystem::read_symlink("/proc/self/exe", failure).parent_path();
}

}  // namespace kelvane::launchers
