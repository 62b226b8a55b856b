// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kelvane {

/// What one chunk of growisofs's standard error says. A chunk is what one read of the pipe gave; it
/// begins and ends anywhere.
///
/// Each chunk is looked at by itself, and little of it: one that begins with the mark of an error,
/// ":-(", is an error as a whole; of any other only the last complete line counts. So a line that
/// is cut in two is seen from its later part only, and what stands before the last line of a
/// chunk goes unseen.
///
/// The bytes are taken for ISO Latin 1; the texts here are UTF-8.
struct GrowisofsChunk {
  enum class Kind {
    Error,     ///< The chunk begins with the mark: `error` is all of it, line feeds included.
    Fragment,  ///< No line ends in it: `fragment` is all of it.
    Lines,     ///< Its last complete line gives `percentDone` or `error`, or neither.
  };

  Kind kind = Kind::Fragment;
  std::optional<std::string> error;
  /// The whole percents of a line such as " 42.17% done, …": its first three characters, " 42".
  std::optional<std::string> percentDone;
  /// What follows the last line feed.
  std::string fragment;
};

GrowisofsChunk readGrowisofsChunk(std::string_view bytes);

/// Whether the error means that the disc was mounted when growisofs wanted the drive for itself, or
/// was mounted again before it had it. It has sent the drive no command then.
bool tellsOfForeignMount(const std::string& error);

/// Where percents (" 42") put a bar that runs from 0 to 2.
double barValueOfPercent(const std::string& percentDone);

}  // namespace kelvane
