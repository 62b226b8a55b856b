// SPDX-License-Identifier: GPL-2.0-or-later
#include "helpers/recorder/recording_job.h"

#include <sys/types.h>

#include <array>
#include <chrono>
#include <cmath>
#include <ctime>
#include <memory>
#include <thread>
#include <utility>

#include <libburn/libburn.h>

#include "burn/producer.h"
#include "helpers/recorder/disc_check.h"
#include "helpers/recorder/grabbed_drive.h"
#include "helpers/recorder/image_source.h"
#include "helpers/recorder/recording_lock.h"
#include "platform/recording/mmc/sg_io_transport.h"

namespace kelvane::recorder {
namespace {

constexpr int64_t kBlockBytes = 2048;
constexpr std::chrono::milliseconds kLookInterval{50};

struct OptionsRelease {
  void operator()(burn::burn_write_opts* options) const { burn::burn_write_opts_free(options); }
};
struct DiscRelease {
  void operator()(burn::burn_disc* disc) const { burn::burn_disc_free(disc); }
};
struct SessionRelease {
  void operator()(burn::burn_session* session) const { burn::burn_session_free(session); }
};
struct TrackRelease {
  void operator()(burn::burn_track* track) const { burn::burn_track_free(track); }
};
using Options = std::unique_ptr<burn::burn_write_opts, OptionsRelease>;
using Disc = std::unique_ptr<burn::burn_disc, DiscRelease>;
using Session = std::unique_ptr<burn::burn_session, SessionRelease>;
using Track = std::unique_ptr<burn::burn_track, TrackRelease>;

// One session with one Mode 1 data track, whose last block is filled up with zeros. libburn counts
// references: each part is kept alive by the one that holds it. Null where it cannot be made.
Disc layoutOf(const std::string& imagePath, int64_t bytes) {
  enum { kNothingBefore = 0, kNothingAfter = 0, kPadLastBlock = 1 };
  auto producer = std::make_unique<Producer>();
  producer->setFilePath(imagePath);
  const SourceReference source = makeImageSource(std::move(producer), bytes);
  const Track track(burn::burn_track_create());
  const Session session(burn::burn_session_create());
  Disc disc(burn::burn_disc_create());
  if (!source || !track || !session || !disc) return nullptr;
  burn::burn_track_define_data(track.get(), kNothingBefore, kNothingAfter, kPadLastBlock,
                               BURN_MODE1);
  const bool complete =
      burn::burn_track_set_source(track.get(), source.get()) == burn::BURN_SOURCE_OK &&
      burn::burn_session_add_track(session.get(), track.get(), BURN_POS_END) != 0 &&
      burn::burn_disc_add_session(disc.get(), session.get(), BURN_POS_END) != 0;
  return complete ? std::move(disc) : nullptr;
}

Options optionsFor(burn::burn_drive* drive, const RecordingOrder& order) {
  enum { kWriteForReal = 0 };
  Options options(burn::burn_write_opts_new(drive));
  if (!options) return options;
  burn::burn_write_opts_set_perform_opc(options.get(), 0);
  burn::burn_write_opts_set_multi(options.get(), order.appendable ? 1 : 0);
  burn::burn_write_opts_set_simulate(options.get(), kWriteForReal);
  burn::burn_write_opts_set_underrun_proof(options.get(), order.underrunProtection ? 1 : 0);
  burn::burn_write_opts_set_write_type(options.get(), burn::BURN_WRITE_TAO, burn::BURN_BLOCK_MODE1);
  return options;
}

// A speed of 0 asks libburn for the highest. A fraction is rounded up, as its documentation says.
void setSpeed(burn::burn_drive* drive, std::optional<double> kilobytesASecond) {
  constexpr int kHighest = 0;
  const double speed = kilobytesASecond.value_or(kHighest);
  burn::burn_drive_set_speed(drive, kHighest, static_cast<int>(std::ceil(speed)));
}

}  // namespace

RecordingJob::RecordingJob(RecordingOrder order, Reporter& reporter)
    : order_(std::move(order)), reporter_(reporter) {}

JobOutcome RecordingJob::run() {
  reporter_.preparing();
  const std::string problem = record();
  if (problem.empty()) {
    reporter_.done(startAddress_, blocks_);
    return JobOutcome::Done;
  }
  reporter_.failed(problem);
  return JobOutcome::Failed;
}

// Empty where the session is on the disc, else why it is not. So do the functions below.
std::string RecordingJob::record() {
  std::string problem = whyImageCannotBeWritten(order_.imagePath, imageBytes_);
  if (!problem.empty()) return problem;
  blocks_ = (imageBytes_ + kBlockBytes - 1) / kBlockBytes;
  std::optional<FileLock> lock;
  problem = lockForRecording(order_.lockPath, lock);
  if (!problem.empty()) return problem;
  mmc::SgIoTransport transport(order_.devicePath);
  problem = whySessionCannotBegin(transport);
  if (!problem.empty()) return problem;
  const auto library = Libburn::start();
  if (!library) return "The recording library could not be started.";
  DriveMessages::startQueue();
  const auto drive = GrabbedDrive::grab(order_.devicePath);
  if (!drive) return withDriveWords("The drive " + order_.devicePath + " cannot be used.");
  return recordWith(drive->get());
}

std::string RecordingJob::recordWith(burn::burn_drive* drive) {
  std::string problem = whyDiscCannotBeWritten(drive);
  if (!problem.empty()) return problem;
  setSpeed(drive, order_.speed);
  const Options options = optionsFor(drive, order_);
  const Disc disc = layoutOf(order_.imagePath, imageBytes_);
  if (!options || !disc) return withDriveWords("The recording could not be prepared.");
  problem = whySessionDoesNotFit(drive, options.get(), blocks_);
  if (!problem.empty()) return problem;
  return write(drive, options.get(), disc.get());
}

std::string RecordingJob::write(burn::burn_drive* drive, burn::burn_write_opts* options,
                                burn::burn_disc* disc) {
  enum { kNextTrack = 0, kNotSilent = 0 };
  int lastStart = 0;
  if (burn::burn_disc_track_lba_nwa(drive, options, kNextTrack, &lastStart, &startAddress_) <= 0) {
    return withDriveWords("The drive does not say where the next session may begin.");
  }
  std::array<char, BURN_REASONS_LEN> reasons{};
  if (burn::burn_precheck_write(options, disc, reasons.data(), kNotSilent) <= 0) {
    return withDriveWords(std::string("The disc cannot be written like this: ") + reasons.data());
  }
  burn::burn_disc_write(options, disc);
  follow(drive);
  messages_.collect();
  if (burn::burn_drive_wrote_well(drive) == 0) return withDriveWords("Writing the disc failed.");
  reporter_.finishing();
  return {};
}

// Reports the progress until the drive has come to rest.
void RecordingJob::follow(burn::burn_drive* drive) {
  bool closing = false;
  int reportedSector = -1;
  burn::burn_progress progress{};
  burn::burn_drive_status status = burn::burn_drive_get_status(drive, &progress);
  for (; status != burn::BURN_DRIVE_IDLE; status = burn::burn_drive_get_status(drive, &progress)) {
    messages_.collect();
    const bool isWriting = status == burn::BURN_DRIVE_WRITING;
    if (isWriting && progress.sector != reportedSector && !closing) {
      reportedSector = progress.sector;
      reporter_.writing(progress.sector, blocks_);
    }
    const bool isClosing =
        status == burn::BURN_DRIVE_CLOSING_TRACK || status == burn::BURN_DRIVE_CLOSING_SESSION;
    if (isClosing && !closing) {
      closing = true;
      reporter_.closing();
    }
    std::this_thread::sleep_for(kLookInterval);
  }
}

std::string RecordingJob::withDriveWords(const std::string& sentence) {
  messages_.collect();
  return messages_.worst().empty() ? sentence : sentence + " " + messages_.worst();
}

}  // namespace kelvane::recorder
