// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>

#include "helpers/isovolume/block_source.h"

namespace kelvane::isovolume {

/// One directory record (ECMA-119, 9.1). The spans point into the sector that it was decoded from.
///
/// byte 0 length of the record, 1 length of an extended attribute record, 2 extent, 10 data length,
/// 18 date, 25 flags, 26 file unit size, 27 interleave gap, 28 volume sequence number, 32 length of
/// the identifier, 33 identifier, padded to an even length, then the system use area up to the
/// record's end.
struct DirectoryRecord {
  std::uint64_t extent = 0;  ///< first block of the data, behind an extended attribute record
  std::uint32_t dataLength = 0;
  std::uint8_t flags = 0;
  bool interleaved = false;
  Bytes date;  ///< kShortDateSize bytes
  Bytes identifier;
  Bytes systemUse;

  [[nodiscard]] bool isDirectory() const { return (flags & 0x02) != 0; }
  [[nodiscard]] bool isAssociated() const { return (flags & 0x04) != 0; }
  /// Another record of the same file follows, with the next section of its data.
  [[nodiscard]] bool isContinued() const { return (flags & 0x80) != 0; }
  [[nodiscard]] bool isSelf() const { return identifier.size() == 1 && identifier[0] == 0; }
  [[nodiscard]] bool isParent() const { return identifier.size() == 1 && identifier[0] == 1; }
};

enum class Decoding {
  record,       ///< a record was decoded
  endOfSector,  ///< no further record in this sector
  damaged,      ///< what stands here is no record; nothing behind it in the sector can be trusted
};

/// Decodes the record with which `restOfSector` begins, and sets `*length` to the bytes that it
/// occupies.
Decoding decodeDirectoryRecord(Bytes restOfSector, DirectoryRecord* record, std::size_t* length);

/// The length of the root directory's record in a volume descriptor (ECMA-119, 8.4.18).
inline constexpr std::size_t kRootRecordLength = 34;

}  // namespace kelvane::isovolume
