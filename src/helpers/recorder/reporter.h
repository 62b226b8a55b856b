// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <cstdint>
#include <string>

namespace kelvane::recorder {

/// Tells whoever started the recorder how far it is: one JSON object a line on standard output.
///
/// Every message has a "state"; the other members belong to single states:
///
///     {"state":"preparing"}                              the drive is opened, the disc looked at
///     {"state":"writing","written":1200,"total":11400}   blocks given to the drive, and in all
///     {"state":"closing"}                                the session is being closed
///     {"state":"erasing","erased":900,"parts":65536}     parts of the erase done, and in all
///     {"state":"finishing"}                              the drive is being released
///     {"state":"done","address":11702,"total":11400}     the session is on the disc, from there
///     {"state":"done"}                                   the disc is erased
///     {"state":"failed","error":"…"}                     it is not; one sentence or more, UTF-8
///
/// They come in this order; "writing" and "erasing" may come any number of times. The last message
/// is "done" or "failed", unless the recorder dies. Readers ignore members and states they do not
/// know.
///
/// Nobody need read: a message that does not fit into the pipe at the moment is dropped, the last
/// one after some seconds of waiting, so a recording never stands still for its reader.
class Reporter {
 public:
  void preparing();
  void writing(int64_t writtenBlocks, int64_t totalBlocks);
  void closing();
  void erasing(int64_t erasedParts, int64_t totalParts);
  void finishing();
  void done(int64_t startAddress, int64_t totalBlocks);
  void erased();
  void failed(const std::string& error);
};

}  // namespace kelvane::recorder
