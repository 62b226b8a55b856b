// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kelvane {

/// What the burn confirmation sheet tells of the session in question, as far as it is known yet.
struct BurnSummary {
  struct Items {
    uint64_t files = 0;
    uint64_t folders = 0;
  };
  struct Changes {
    Items added;
    Items replaced;
    Items renamed;  ///< Found under another name or in another folder.
    Items deleted;
  };
  enum class Certainty { Estimated, Exact };
  /// A number of bytes, and whether it is one to rely on.
  struct Bytes {
    int64_t bytes = 0;
    Certainty certainty = Certainty::Estimated;
  };

  /// Empty until they have been counted.
  std::optional<Changes> changes;
  /// What the session takes of the disc.
  std::optional<Bytes> needed;
  /// What could be put on the disc until now. Empty where it is not known.
  std::optional<Bytes> freeBefore;
  /// What further sessions can take afterwards; negative where the session does not fit, by as much
  /// as is missing.
  std::optional<Bytes> freeAfterwards;
  /// Items that nobody deleted and that would be missing all the same, by their paths on the
  /// volume; a folder's ends in "/".
  std::vector<std::string> hiddenToo;
  /// Items that were deleted and would be there all the same, as empty files, by their paths on the
  /// volume.
  std::vector<std::string> shownStill;
  /// Why the session cannot be built, in the user's language; empty where nothing is known against
  /// it.
  std::string problem;
  bool problemLiesInTheDisc = false;  ///< No other session could be added to it either.
  bool isComplete = false;            ///< Nothing else will be found out.

  /// Whether it is certain that the session does not fit.
  bool isTooLarge() const {
    return freeAfterwards && freeAfterwards->bytes < 0 &&
           freeAfterwards->certainty == Certainty::Exact;
  }
  /// Whether to burn would miss what the user wants, or part of it.
  bool warns() const {
    return isTooLarge() || !problem.empty() || !hiddenToo.empty() || !shownStill.empty();
  }
};

}  // namespace kelvane
