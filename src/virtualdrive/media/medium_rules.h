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
  /// Bits of byte 6 of READ TRACK INFORMATION that follow from the medium: 7, which every track of
  /// a DVD+R has, 5 (written in packets or incrementally) and 4 (in fixed packets) (MMC-5, 6.28.3).
  std::uint8_t stateBits = 0;
  /// Where the next sector has to go; empty where the track takes none.
  std::optional<Lba> nextWritable;
  /// Sectors that still fit in.
  Lba free = 0;
};

/// A closed session as readers find it.
struct SessionView {
  int number = 1;
  int firstTrack = 1;
  int lastTrack = 1;
  Lba start = 0;
  Lba leadOut = 0;
};

// The state of a disc in the words of READ DISC INFORMATION (MMC-5, 6.22.3.1).
enum class DiscStatus : std::uint8_t { Blank = 0, Appendable = 1, Complete = 2 };
enum class SessionState : std::uint8_t { Empty = 0, Incomplete = 1, Complete = 3 };
enum class BackgroundFormat : std::uint8_t { None = 0, Stopped = 1, Running = 2, Complete = 3 };

struct DiscSummary {
  DiscStatus status = DiscStatus::Blank;
  SessionState lastSession = SessionState::Empty;
  BackgroundFormat backgroundFormat = BackgroundFormat::None;
  /// The open session counts.
  int sessions = 1;
  /// The invisible track counts.
  int firstTrackOfLastSession = 1;
  int lastTrackOfLastSession = 1;
};

/// What READ FORMAT CAPACITIES tells of a disc (MMC-5, 6.24).
struct FormatCapacities {
  /// What FORMAT UNIT can do: its format type, the sectors it makes, and the type's parameter.
  struct Choice {
    std::uint8_t type;
    Lba sectors;
    std::uint32_t parameter;
  };
  bool formatted = false;
  Lba sectors = 0;
  std::vector<Choice> choices;
};

/// A FORMAT UNIT (MMC-5, 6.4).
struct FormatRequest {
  std::uint8_t type = 0;
  /// As the program wrote it: FFFFFFFFh stands for "all" with some types.
  std::uint32_t sectors = 0;
  std::uint32_t parameter = 0;
};

/// How much of the disc a BLANK removes.
enum class BlankExtent { Full, Minimal };

/// What can be done with one kind of medium, and what becomes of its disc then. Without state: it
/// acts on the folder's `disc` and `sectors` and stores them. Every change is stored before it is
/// reported as done, in an order that leaves a consistent disc wherever a kill comes in between.
///
/// What a medium does not know is refused (5/30/00, or 5/24/00 for a function of a command).
class MediumRules {
 public:
  virtual ~MediumRules() = default;

  /// The rules of that disc's medium, in the mode it is in.
  static const MediumRules& of(const DiscState& disc);

  /// The profile number (MMC-5, 5.3.1).
  virtual std::uint16_t profile() const = 0;
  virtual bool erasable() const = 0;
  /// The features that are current because of this disc (MMC-5, 5.3).
  virtual std::vector<std::uint16_t> currentFeatures(const DiscState& disc) const = 0;

  /// Every track in order, the invisible one last.
  virtual std::vector<TrackView> tracks(const DiscState& disc) const = 0;
  /// The closed sessions in order.
  virtual std::vector<SessionView> sessions(const DiscState& disc) const;
  virtual DiscSummary summary(const DiscState& disc) const;
  virtual FormatCapacities formatCapacities(const DiscState& disc) const;
  /// Why the sectors cannot all be read; good where they can.
  virtual Sense checkReadable(const DiscState& disc, Lba first, Lba count) const;
  /// Whether a data block type and write type can be set (write parameters page).
  virtual bool accepts(const WriteParameters& parameters) const = 0;

  /// The bytes of a block that a WRITE to that address has to send.
  virtual std::size_t blockBytes(const DiscFolder& folder, Lba first) const;
  virtual Sense write(DiscFolder& folder, Lba first, std::span<const std::uint8_t> data) const = 0;
  /// The program has no more data for now (SYNCHRONIZE CACHE).
  virtual Sense endWriting(DiscFolder& folder) const;
  virtual Sense reserveTrack(DiscFolder& folder, Lba sectors) const;
  virtual Sense takeCueSheet(DiscFolder& folder, std::span<const std::uint8_t> sheet) const;
  virtual Sense closeTrack(DiscFolder& folder, int number) const;
  virtual Sense closeSession(DiscFolder& folder) const;
  /// Closes the disc for good (close functions 5 and 6).
  virtual Sense finalize(DiscFolder& folder) const;
  /// Ends the background formatting (close function 0).
  virtual Sense stopFormatting(DiscFolder& folder) const;
  virtual Sense blank(DiscFolder& folder, BlankExtent extent) const;
  virtual Sense format(DiscFolder& folder, const FormatRequest& request) const;
};

/// The end of the last closed session, which is what a reader takes for the disc's.
Lba readableEnd(const DiscState& disc);

}  // namespace kelvane::virtualdrive
