// SPDX-License-Identifier: GPL-2.0-or-later
#include "helpers/isovolume/directory_record.h"

#include "helpers/isovolume/iso_date.h"
#include "helpers/isovolume/iso_fields.h"

namespace kelvane::isovolume {
namespace {
constexpr std::size_t kIdentifierOffset = 33;
}

Decoding decodeDirectoryRecord(Bytes restOfSector, DirectoryRecord* record, std::size_t* length) {
  if (restOfSector.empty() || restOfSector[0] == 0) return Decoding::endOfSector;
  const std::size_t recordLength = restOfSector[0];
  if (recordLength > restOfSector.size() || recordLength < kIdentifierOffset + 1) {
    return Decoding::damaged;
  }
  const Bytes bytes = restOfSector.first(recordLength);
  const std::size_t identifierLength = bytes[32];
  if (identifierLength == 0 || identifierLength > recordLength - kIdentifierOffset) {
    return Decoding::damaged;
  }
  record->extent = std::uint64_t{bothEndian32(bytes, 2)} + bytes[1];
  record->dataLength = bothEndian32(bytes, 10);
  record->date = bytes.subspan(18, kShortDateSize);
  record->flags = bytes[25];
  record->interleaved = bytes[26] != 0 || bytes[27] != 0;
  record->identifier = bytes.subspan(kIdentifierOffset, identifierLength);
  // An even identifier is padded, so that the record goes on at an even offset (9.1.12).
  std::size_t systemUse = kIdentifierOffset + identifierLength;
  if (identifierLength % 2 == 0) ++systemUse;
  record->systemUse = systemUse < recordLength ? bytes.subspan(systemUse) : Bytes();
  *length = recordLength;
  return Decoding::record;
}

}  // namespace kelvane::isovolume
