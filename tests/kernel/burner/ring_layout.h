// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>

namespace kelvane::kernelburner {

// The memory that Linux shares with a program that carries out SCSI commands for it: a mailbox, a
// ring of entries, and the data of commands. This is version 2 of the interface; the kernel
// describes it in linux/target_core_user.h, which is no C++. All numbers have the machine's byte
// order, and all addresses count from the beginning of the memory.

inline constexpr std::uint16_t kRingVersion = 2;

/// Bits of Mailbox::flags: what this kernel can do.
inline constexpr std::uint16_t kKernelTakesReadLength = 1 << 1;

struct Mailbox {
  std::uint16_t version;
  std::uint16_t flags;
  std::uint32_t ringOffset;
  std::uint32_t ringBytes;
  /// Where the kernel puts its next entry, from the beginning of the ring. Written by the kernel.
  std::uint32_t head;
  /// The first entry that has not been carried out. Written by us.
  alignas(64) std::uint32_t tail;
};
static_assert(offsetof(Mailbox, head) == 12 && offsetof(Mailbox, tail) == 64);

/// What an entry is, in the lowest bits of its length.
enum class EntryKind : std::uint32_t {
  Padding = 0,  ///< Fills the ring up to its end.
  Command = 1,
};
inline constexpr std::uint32_t kEntryKindMask = 0x7;

/// Bits of EntryHeader::ourFlags.
inline constexpr std::uint8_t kNotUnderstood = 0x1;
inline constexpr std::uint8_t kReadLengthIsGiven = 0x2;

struct EntryHeader {
  std::uint32_t lengthAndKind;
  std::uint16_t commandNumber;
  std::uint8_t kernelFlags;
  std::uint8_t ourFlags;
};
static_assert(sizeof(EntryHeader) == 8);

/// An entry as the kernel writes it. `dataPieces` data pieces follow.
struct RequestEntry {
  EntryHeader header;
  std::uint32_t dataPieces;
  std::uint32_t bidirectionalPieces;
  std::uint32_t integrityPieces;
  std::uint32_t padding;
  std::uint64_t commandBlockOffset;
  std::uint64_t unused[2];
};
static_assert(offsetof(RequestEntry, commandBlockOffset) == 24 && sizeof(RequestEntry) == 48);

/// A piece of a command's data.
struct DataPiece {
  std::uint64_t offset;
  std::uint64_t bytes;
};
static_assert(sizeof(DataPiece) == 16);

/// What we write over the entry.
struct ResponseEntry {
  EntryHeader header;
  std::uint8_t status;
  std::uint8_t unused[3];
  std::uint32_t readLength;
  std::uint8_t sense[96];
};
static_assert(offsetof(ResponseEntry, readLength) == 12 && sizeof(ResponseEntry) == 112);

}  // namespace kelvane::kernelburner
