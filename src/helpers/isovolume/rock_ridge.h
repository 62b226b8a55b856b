// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "helpers/isovolume/continuation_reader.h"
#include "helpers/isovolume/directory_record.h"

namespace kelvane::isovolume {

/// What the system use area of a directory record says beyond ISO-9660 (System Use Sharing
/// Protocol, IEEE P1281; Rock Ridge Interchange Protocol, IEEE P1282). Unknown entries and
/// sparse-file entries are passed over.
struct RockRidge {
  struct Posix {
    std::uint32_t mode = 0;
    std::uint32_t links = 1;
    std::uint32_t user = 0;
    std::uint32_t group = 0;
  };
  struct Device {
    std::uint32_t high = 0;
    std::uint32_t low = 0;
  };

  std::optional<Posix> posix;            ///< PX
  std::optional<Device> device;          ///< PN
  std::string name;                      ///< NM, all parts; empty when there is none
  std::string target;                    ///< SL, the text of the symbolic link
  bool damagedTarget = false;            ///< the link's text is too long or contains NUL
  std::optional<std::uint64_t> child;    ///< CL: the block of the directory that belongs here
  bool relocated = false;                ///< RE: this directory belongs elsewhere
  std::optional<std::int64_t> modified;  ///< TF; seconds since 1970
  std::optional<std::int64_t> accessed;  ///< TF
  std::optional<std::int64_t> changed;   ///< TF: of the attributes, else of the creation
  bool sharingProtocol = false;          ///< SP with its check bytes
  std::uint8_t skip = 0;                 ///< SP: bytes to pass over in every other record's area
  bool extension = false;                ///< ER that names Rock Ridge

  /// Forgets everything and keeps the strings' memory.
  void clear();
};

/// Reads system use areas, following their continuations.
class RockRidgeReader {
 public:
  /// `source` is borrowed.
  explicit RockRidgeReader(BlockSource& source) : continuations_(source) {}

  /// Bytes at the beginning of each area that are none of the protocol's. (SUSP, 5.3)
  void setSkip(std::uint8_t bytes) { skip_ = bytes; }

  /// Fills `*out` from `area`, as far as the area is sound. The chain of continuations is bounded.
  void read(Bytes area, RockRidge* out);

 private:
  ContinuationReader continuations_;
  std::vector<std::uint8_t> buffer_;
  std::uint8_t skip_ = 0;
};

}  // namespace kelvane::isovolume
