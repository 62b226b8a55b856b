// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "virtualdrive/sense.h"
#include "virtualdrive/state/disc_folder.h"

namespace kelvane::virtualdrive {

/// A track as programs are told of it, the invisible one at the end of an appendable disc included.
struct TrackView {
  int number = 1;
  int session = 1;
  Lba start = 0;
  /// Sectors it has, or could have where it is still open.
  Lba size = 0;
  Lba recorded = 0;
  bool reserved = false;
  bool complete = false;
  /// Nothing of it has been described yet: a WRITE to its start makes it a track.
  bool invisible = false;
  TrackForm form = TrackForm::Mode1;
  /// Where the next sector has to go; empty where the track takes none.
  std::optional<Lba> nextWritable;
  /// Sectors that still fit in.
  Lba free = 0;
};

/// How much of the disc a BLANK removes.
enum class BlankExtent { Full, Minimal };

/// What can be done with one kind of medium, and what becomes of its disc then. Without state: it
/// acts on the folder's `disc` and `sectors` and stores them. Every change is stored before it is
/// reported as done, in an order that leaves a consistent disc wherever a kill comes in between.
class MediumRules {
 public:
  virtual ~MediumRules() = default;

  /// The rules of that medium; they exist for every medium that isEmulated.
  static const MediumRules& of(MediumKind kind);

  /// The profile number (MMC-5, 5.3.1).
  virtual std::uint16_t profile() const = 0;
  virtual bool erasable() const = 0;

  /// Every track in order, the invisible one last.
  virtual std::vector<TrackView> tracks(const DiscState& disc) const = 0;
  /// Whether a data block type and write type can be set (write parameters page).
  virtual bool accepts(const WriteParameters& parameters) const = 0;

  virtual Sense write(DiscFolder& folder, Lba first, std::span<const std::uint8_t> data) const = 0;
  /// The program has no more data for now (SYNCHRONIZE CACHE).
  virtual Sense endWriting(DiscFolder& folder) const = 0;
  virtual Sense reserveTrack(DiscFolder& folder, Lba sectors) const = 0;
  virtual Sense takeCueSheet(DiscFolder& folder, std::span<const std::uint8_t> sheet) const = 0;
  virtual Sense closeTrack(DiscFolder& folder, int number) const = 0;
  virtual Sense closeSession(DiscFolder& folder) const = 0;
  virtual Sense blank(DiscFolder& folder, BlankExtent extent) const = 0;
};

}  // namespace kelvane::virtualdrive
