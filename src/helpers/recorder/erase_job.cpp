// SPDX-License-Identifier: GPL-2.0-or-later
#include "helpers/recorder/erase_job.h"

#include <sys/types.h>

#include <chrono>
#include <ctime>
#include <optional>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include <libburn/libburn.h>

#include "helpers/recorder/disc_check.h"
#include "helpers/recorder/grabbed_drive.h"
#include "helpers/recorder/recording_lock.h"
#include "platform/recording/mmc/sg_io_transport.h"
#include "platform/recording/mmc/tray.h"

namespace kelvane::recorder {
namespace {

constexpr int kBlockBytes = 2048;
constexpr int kBlocksAtOnce = 16;
// LOGICAL BLOCK ADDRESS OUT OF RANGE, as libburn words a sense code.
constexpr std::string_view kBeyondTheEnd = "[5 21 00]";
constexpr std::chrono::milliseconds kLookInterval{50};

// A drive that has just erased its disc looks at it anew, and is not ready meanwhile.
MediaState settledState(mmc::Transport& transport) {
  constexpr std::chrono::milliseconds kPause{100};
  constexpr int kMostPauses = 600;
  MediaState state = readMediaState(transport);
  for (int pause = 0; state.transitioning && pause < kMostPauses; ++pause) {
    std::this_thread::sleep_for(kPause);
    state = readMediaState(transport);
  }
  return state;
}

// Some drives describe a disc as they found it when it was loaded, until it is loaded anew.
bool discIsBlank(mmc::Transport& transport) {
  if (settledState(transport).blank) return true;
  static_cast<void>(mmc::allowMediumRemoval(transport));
  if (!mmc::openTray(transport).isGood() || !mmc::closeTray(transport).isGood()) return false;
  return settledState(transport).blank;
}

}  // namespace

EraseJob::EraseJob(EraseOrder order, Reporter& reporter)
    : order_(std::move(order)), reporter_(reporter) {}

JobOutcome EraseJob::run() {
  reporter_.preparing();
  const std::string problem = erase();
  if (problem.empty()) {
    reporter_.erased();
    return JobOutcome::Done;
  }
  reporter_.failed(problem);
  return JobOutcome::Failed;
}

// Empty where the disc is blank, else why it is not. So do the functions below.
std::string EraseJob::erase() {
  std::optional<FileLock> lock;
  std::string problem = lockForRecording(order_.lockPath, lock);
  if (!problem.empty()) return problem;
  mmc::SgIoTransport transport(order_.devicePath);
  const EraseMethod method = eraseMethodFor(transport, problem);
  if (!problem.empty() || method == EraseMethod::None) return problem;
  problem = eraseBy(method);
  if (!problem.empty()) {
    // What libburn takes for a failed blanking may be a drive that tells of its changed medium. A
    // disc that was overwritten in part looks blank too early for that.
    const bool isBlanked = method == EraseMethod::Blank && settledState(transport).blank;
    return isBlanked ? std::string() : problem;
  }
  reporter_.finishing();
  if (discIsBlank(transport)) return {};
  return withKnownWords("The drive has erased the disc, but does not call it blank.");
}

std::string EraseJob::eraseBy(EraseMethod method) {
  const auto library = Libburn::start();
  if (!library) return "The recording library could not be started.";
  DriveMessages::startQueue();
  const auto drive = GrabbedDrive::grab(order_.devicePath);
  if (!drive) return withDriveWords("The drive " + order_.devicePath + " cannot be used.");
  waitUntilDiscIsKnown(drive->get());
  return method == EraseMethod::Blank ? blank(drive->get()) : overwriteBeginning(drive->get());
}

// libburn blanks only what it takes for full; what the disc is like was asked for already, and a
// disc with an unfinished session is to be erased most of all.
std::string EraseJob::blank(burn::burn_drive* drive) {
  constexpr int kQuick = 1;
  burn::burn_disc_pretend_full_uncond(drive);
  burn::burn_disc_erase(drive, kQuick);
  followBlanking(drive);
  if (burn::burn_drive_wrote_well(drive) == 0) return withDriveWords("Erasing the disc failed.");
  return {};
}

void EraseJob::followBlanking(burn::burn_drive* drive) {
  int reported = -1;
  burn::burn_progress progress{};
  while (burn::burn_drive_get_status(drive, &progress) != burn::BURN_DRIVE_IDLE) {
    messages_.collect();
    if (progress.sectors > 0 && progress.sector != reported) {
      reported = progress.sector;
      reporter_.erasing(progress.sector, progress.sectors);
    }
    std::this_thread::sleep_for(kLookInterval);
  }
}

// A disc with little on it may be formatted no further than that. Where it ends there is nothing to
// be overwritten; every other refusal leaves something behind.
std::string EraseJob::overwriteBeginning(burn::burn_drive* drive) {
  enum { kLeaveInBuffer = 0, kFlushBuffer = 1 };
  std::vector<char> zeros(size_t{kBlocksAtOnce} * kBlockBytes);
  const auto bytes = static_cast<off_t>(zeros.size());
  int block = 0;
  for (; block < kVolumeDescriptionBlocks; block += kBlocksAtOnce) {
    const auto address = static_cast<off_t>(block) * kBlockBytes;
    if (burn::burn_random_access_write(drive, address, zeros.data(), bytes, kLeaveInBuffer) <= 0) {
      break;
    }
    reporter_.erasing(block + kBlocksAtOnce, kVolumeDescriptionBlocks);
  }
  messages_.collect();
  const bool isOverwritten =
      block >= kVolumeDescriptionBlocks ||
      (block > 0 && messages_.worst().find(kBeyondTheEnd) != std::string::npos);
  const int flushed = burn::burn_random_access_write(drive, 0, zeros.data(), 0, kFlushBuffer);
  if (!isOverwritten || flushed <= 0) {
    return withDriveWords("The beginning of the disc cannot be overwritten.");
  }
  return {};
}

std::string EraseJob::withDriveWords(const std::string& sentence) {
  messages_.collect();
  return withKnownWords(sentence);
}

// With what was collected while libburn ran.
std::string EraseJob::withKnownWords(const std::string& sentence) const {
  return messages_.worst().empty() ? sentence : sentence + " " + messages_.worst();
}

}  // namespace kelvane::recorder
