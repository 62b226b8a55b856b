// SPDX-License-Identifier: GPL-2.0-or-later
#include "helpers/recorder/disc_check.h"

#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <ctime>
#include <limits>
#include <thread>

#include <libburn/libburn.h>

#include "platform/recording/mmc/disc_information.h"

namespace kelvane::recorder {
namespace {

constexpr int64_t kBlockBytes = 2048;
// A CD track lasts four seconds at least; a shorter one is filled up.
constexpr int64_t kShortestTrackBlocks = 300;

}  // namespace

std::string whyImageCannotBeWritten(const std::string& path, int64_t& bytes) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0 || access(path.c_str(), R_OK) != 0) {
    return "The image " + path + " cannot be read: " + std::strerror(errno) + ".";
  }
  if (!S_ISREG(status.st_mode)) return "The image " + path + " is not a file.";
  if (status.st_size == 0) return "The image " + path + " is empty.";
  if (status.st_size > std::numeric_limits<int32_t>::max()) {
    return "The image " + path + " is 2 GiB or larger.";
  }
  bytes = status.st_size;
  return {};
}

std::string whySessionCannotBegin(mmc::Transport& transport) {
  const auto disc = mmc::readDiscInformation(transport);
  if (!disc || !disc->isOpen() || disc->canTakeSession()) return {};
  return "The disc holds a session that was never finished. What was recorded before it can be "
         "read, but nothing can be added.";
}

void waitUntilDiscIsKnown(burn::burn_drive* drive) {
  constexpr std::chrono::milliseconds kPause{100};
  constexpr int kMostPauses = 600;
  for (int pause = 0; pause < kMostPauses; ++pause) {
    if (burn::burn_disc_get_status(drive) != burn::BURN_DISC_UNREADY) return;
    std::this_thread::sleep_for(kPause);
  }
}

std::string whyDiscCannotBeWritten(burn::burn_drive* drive) {
  waitUntilDiscIsKnown(drive);
  switch (burn::burn_disc_get_status(drive)) {
    case burn::BURN_DISC_BLANK:
    case burn::BURN_DISC_APPENDABLE:
      return {};
    case burn::BURN_DISC_EMPTY:
      return "There is no disc in the drive.";
    case burn::BURN_DISC_FULL:
      return "The disc is closed; no further session can be written.";
    default:
      return "The disc in the drive is not one that can be written.";
  }
}

std::string whySessionDoesNotFit(burn::burn_drive* drive, burn::burn_write_opts* options,
                                 int64_t blocks) {
  const int64_t freeBlocks = burn::burn_disc_available_space(drive, options) / kBlockBytes;
  const int64_t needed = std::max(blocks, kShortestTrackBlocks);
  if (needed <= freeBlocks) return {};
  return "The session needs " + std::to_string(needed) + " blocks, but only " +
         std::to_string(freeBlocks) + " are free on the disc.";
}

}  // namespace kelvane::recorder
