// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "helpers/recorder/drive_messages.h"
#include "helpers/recorder/job_outcome.h"
#include "helpers/recorder/reporter.h"

namespace burn {
struct burn_disc;
struct burn_drive;
struct burn_write_opts;
}  // namespace burn

namespace kelvane::recorder {

/// What is to be written, where and how.
struct RecordingOrder {
  std::string devicePath;
  std::string imagePath;
  /// A file to be locked while the drive is in use; empty: none.
  std::string lockPath;
  /// Kilobytes (1000 bytes) a second; absent: as fast as possible.
  std::optional<double> speed;
  bool appendable = false;
  bool underrunProtection = true;
};

/// Writes an image to a disc as one track in one session, track at once.
///
/// Nothing is written unless the image is there, the disc can take a session, and the session fits.
class RecordingJob {
 public:
  RecordingJob(RecordingOrder order, Reporter& reporter);

  /// Does all of it. The last thing it reports is that it is done or has failed.
  JobOutcome run();

 private:
  std::string record();
  std::string recordWith(burn::burn_drive* drive);
  std::string write(burn::burn_drive* drive, burn::burn_write_opts* options, burn::burn_disc* disc);
  void follow(burn::burn_drive* drive);
  std::string withDriveWords(const std::string& sentence);

  RecordingOrder order_;
  Reporter& reporter_;
  DriveMessages messages_;
  int64_t imageBytes_ = 0;
  int64_t blocks_ = 0;
  int startAddress_ = 0;
};

}  // namespace kelvane::recorder
