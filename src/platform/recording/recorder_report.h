// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kelvane {

/// One message of the recorder; see helpers/recorder/reporter.h for the lines it is read from.
struct RecorderReport {
  enum class Kind {
    Preparing,  ///< The drive is being opened and the disc looked at.
    Writing,    ///< `writtenBlocks` of `totalBlocks` have been given to the drive.
    Closing,    ///< The session is being closed.
    Erasing,    ///< `erasedParts` of `totalParts` of an erase are done.
    Finishing,  ///< The drive is being released.
    Done,       ///< The session is on the disc, `totalBlocks` from `startAddress`; or the disc is
                ///< blank.
    Failed,     ///< It is not; `error` says why.
  };

  Kind kind = Kind::Preparing;
  int64_t writtenBlocks = 0;
  int64_t totalBlocks = 0;
  int64_t erasedParts = 0;
  int64_t totalParts = 0;
  int64_t startAddress = 0;
  std::string error;
};

/// Reads one line. Empty where the line is no message: not JSON, of a kind not known, or with a
/// field of the wrong type. Fields not known are ignored; negative numbers read as 0.
std::optional<RecorderReport> parseRecorderReport(std::string_view line);

}  // namespace kelvane
