// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <cstddef>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

namespace kelvane {

/// What growisofs and the image builder that it runs have said beyond telling how far they are: the
/// lines that people want to see when something is wrong.
///
/// The verdict on a burn looks at little of the output (GrowisofsChunk). Here all of it is read,
/// lines that arrive in pieces among it, so that the cause of a failure can be told, and a failure
/// that the verdict misses can still be found in the log. One thread at a time.
class GrowisofsRemarks {
 public:
  /// How many lines are kept, the last ones.
  static constexpr size_t kMostLines = 30;

  /// Takes in the next piece of standard error.
  void take(std::string_view bytes);
  /// Nothing more will come: what stands after the last line feed is a line, too.
  void end();

  /// Those of the lines that leave a burn doubtful which counts as a success: something went wrong
  /// that is no failure to growisofs, or a file was left out.
  std::vector<std::string> doubts() const;

  /// The lines, as they were written, without line feeds.
  const std::deque<std::string>& lines() const { return lines_; }

 private:
  void takeLine(std::string_view line);

  std::string incomplete_;
  std::deque<std::string> lines_;
};

}  // namespace kelvane
