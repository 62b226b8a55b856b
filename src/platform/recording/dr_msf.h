// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <cstdint>

namespace kelvane {

/// A length on a disc, in blocks (frames; 75 of them are a second of a CD).
class DRMSF {
 public:
  constexpr DRMSF() = default;

  static constexpr DRMSF msfWithFrames(uint32_t frames) { return DRMSF(frames); }

  constexpr uint32_t frames() const { return frames_; }

  friend constexpr bool operator==(const DRMSF&, const DRMSF&) = default;

 private:
  explicit constexpr DRMSF(uint32_t frames) : frames_(frames) {}

  uint32_t frames_ = 0;
};

}  // namespace kelvane
