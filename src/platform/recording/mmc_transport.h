// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <span>

namespace kelvane::mmc {

/// Why a drive refused a command, as SPC-3 4.5 has it: sense key, additional sense code and its
/// qualifier.
struct Sense {
  uint8_t key = 0;
  uint8_t code = 0;
  uint8_t qualifier = 0;

  friend bool operator==(const Sense&, const Sense&) = default;
};

enum class Status {
  Good,
  CheckCondition,  ///< The drive answered with sense data.
  Unreachable,  ///< No answer: the drive is gone, busy beyond the time limit, or may not be used by
                ///< this user.
};

/// How a drive answered one command block.
struct Answer {
  Status status = Status::Unreachable;
  Sense sense;             ///< Of a CheckCondition.
  size_t transferred = 0;  ///< Bytes of data that the drive gave or took.
  int errorNumber = 0;     ///< An errno value where the drive is Unreachable.

  bool isGood() const { return status == Status::Good; }
};

/// The road to one drive: command block in, data either way, status and sense out.
///
/// Everything that asks a drive about its disc speaks through this interface and does not know
/// whether the drive is real. One thread at a time uses a transport.
class Transport {
 public:
  virtual ~Transport() = default;

  /// Sends a command block that reads at most `data.size()` bytes from the drive (none where `data`
  /// is empty).
  virtual Answer read(std::span<const uint8_t> commandBlock, std::span<uint8_t> data,
                      std::chrono::milliseconds timeLimit) = 0;

  /// Sends a command block that hands `data` to the drive, or sets something in it without any.
  virtual Answer write(std::span<const uint8_t> commandBlock, std::span<const uint8_t> data,
                       std::chrono::milliseconds timeLimit) = 0;

  /// Whether nobody can have the drive alone now, whatever the locks say: somebody else has it, or
  /// it cannot be opened.
  virtual bool refusesExclusiveAccess() const { return false; }
};

}  // namespace kelvane::mmc
