// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <cstddef>

#include "virtualdrive/sense.h"

namespace kelvane::virtualdrive {

/// What a command block came to.
struct CommandResult {
  /// All zero: status GOOD. Anything else: CHECK CONDITION with this sense.
  Sense sense;
  /// Bytes put into the data of the answer, or taken from the data that was sent.
  std::size_t transferred = 0;
  /// There is no drive any more that could answer.
  bool gone = false;
  /// Not 0: the command has not reached the drive, since this machine lacks what it takes, such as
  /// a descriptor; an errno value. The sense says nothing then.
  int systemError = 0;

  bool good() const { return sense.good(); }
};

}  // namespace kelvane::virtualdrive
