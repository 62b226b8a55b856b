// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "virtualdrive/sense.h"
#include "virtualdrive/state/disc_state.h"

namespace kelvane::virtualdrive {

/// Which commands a fault waits for.
struct FaultTrigger {
  /// Before: the fault happens instead of the command. After: once it was carried out.
  enum class Moment { Before, After };
  Moment moment = Moment::Before;
  /// Operation codes; any where there is none.
  std::vector<std::uint8_t> operations;
  /// Only such commands as read or write this sector.
  std::optional<Lba> address;
  /// The first of them that counts, from 1.
  std::uint64_t number = 1;
  /// Whether all that come after it count too.
  bool andLater = false;
};

enum class FaultEffect {
  /// The command is refused with `sense`.
  Refusal,
  /// A unit attention: the medium may have changed (6/28/00).
  Attention,
  /// The drive disappears, as if its cable was pulled.
  Gone,
  /// Until the disc is loaded anew, the drive describes it as it was when it was loaded.
  Stale,
};

struct Fault {
  FaultTrigger trigger;
  FaultEffect effect = FaultEffect::Refusal;
  Sense sense;
};

/// What is to go wrong with a drive: the file `faults` in the folder of its disc. A line each; what
/// follows "#" is a remark.
///
///     on write 120: sense 3/0C/00        the 120th WRITE is refused (key/code/qualifier)
///     on write 9 and later: full         from the 9th on: 5/63/00
///     on opc: sense 3/73/03              the first SEND OPC INFORMATION
///     on write lba 5000: sense 3/0C/00   the first WRITE that covers this sector
///     on command 40: attention           the 40th command of any kind
///     on 0x53: gone                      by operation code: here the drive disappears
///     after close 2: attention           the command after the second CLOSE learns of it
///     after close: stale                 shows what was written only when loaded anew
///     load: not ready 3000 ms            how long it takes to know a disc that was loaded
///     load: never ready
///     exclusive: refused                 nobody gets the drive for himself
///     pace: 1385 KB/s                    reads and writes in real time (1000 bytes)
///
/// The commands have the names read, write, sync, close, reserve, opc, blank, format, info, track,
/// toc, ready and tray. They are counted from the moment the file is put there or changed.
struct FaultScript {
  std::vector<Fault> faults;
  /// How long a loaded disc is "becoming ready"; for ever where this is the largest value.
  std::chrono::milliseconds notReadyAfterLoad{0};
  bool refusesExclusiveAccess = false;
  /// 0: as fast as it goes.
  std::int64_t bytesPerSecond = 0;

  static constexpr std::chrono::milliseconds kNeverReady = std::chrono::milliseconds::max();
};

/// Empty, with the line and what is wrong with it in `error`, where the text is no such script.
std::optional<FaultScript> parseFaultScript(std::string_view text, std::string* error);

}  // namespace kelvane::virtualdrive
