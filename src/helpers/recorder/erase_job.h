// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <string>

#include "helpers/recorder/drive_messages.h"
#include "helpers/recorder/erase_method.h"
#include "helpers/recorder/job_outcome.h"
#include "helpers/recorder/reporter.h"
#include "platform/recording/mmc_transport.h"

namespace burn {
struct burn_drive;
}  // namespace burn

namespace kelvane::recorder {

/// Which disc is to be erased.
struct EraseOrder {
  std::string devicePath;
  /// A file to be locked while the drive is in use; empty: none.
  std::string lockPath;
};

/// Makes the rewritable disc in a drive a blank one again, the quick way.
///
/// Nothing is sent to a disc that cannot be erased, and nothing to one that is blank. It has
/// succeeded when the drive itself calls the disc blank afterwards, whatever it said on the way.
class EraseJob {
 public:
  EraseJob(EraseOrder order, Reporter& reporter);

  /// Does all of it. The last thing it reports is that it is done or has failed.
  JobOutcome run();

 private:
  std::string erase();
  std::string eraseBy(EraseMethod method);
  std::string blank(burn::burn_drive* drive);
  std::string overwriteBeginning(burn::burn_drive* drive);
  void followBlanking(burn::burn_drive* drive);
  std::string withDriveWords(const std::string& sentence);
  std::string withKnownWords(const std::string& sentence) const;

  EraseOrder order_;
  Reporter& reporter_;
  DriveMessages messages_;
};

}  // namespace kelvane::recorder
