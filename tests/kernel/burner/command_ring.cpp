// SPDX-License-Identifier: GPL-2.0-or-later
#include "command_ring.h"

#include <algorithm>
#include <atomic>
#include <cstring>

namespace kelvane::kernelburner {
namespace {

// What the kernel lets one command carry is far less.
constexpr std::size_t kMostDataBytes = std::size_t{64} << 20;
constexpr std::uint32_t kMostPieces = 4096;

/// How long a command block is, by its operation code (SPC-3, 4.3.4.1).
std::size_t commandBlockBytes(std::uint8_t operation) {
  switch (operation >> 5) {
    case 0:
      return 6;
    case 4:
      return 16;
    case 5:
      return 12;
    default:
      return 10;
  }
}

}  // namespace

// Null where it would lie outside of the memory.
template <typename T>
T* CommandRing::at(std::uint64_t offset, std::uint64_t count) const {
  const std::uint64_t bytes = sizeof(T) * count;
  if (offset > memory_.size() || bytes > memory_.size() - offset) return nullptr;
  return reinterpret_cast<T*>(memory_.data() + offset);
}

std::optional<CommandRing> CommandRing::over(std::span<std::byte> memory, std::string* error) {
  CommandRing ring(memory);
  if (memory.size() < sizeof(Mailbox)) {
    *error = "The kernel's memory is too small for a mailbox.";
    return std::nullopt;
  }
  const Mailbox& mailbox = ring.mailbox();
  if (mailbox.version != kRingVersion) {
    *error = "The kernel's ring has version " + std::to_string(mailbox.version) + ", not " +
             std::to_string(kRingVersion) + ".";
    return std::nullopt;
  }
  if (mailbox.ringBytes == 0 ||
      ring.at<std::byte>(mailbox.ringOffset, mailbox.ringBytes) == nullptr) {
    *error = "The kernel's ring does not lie in its memory.";
    return std::nullopt;
  }
  return ring;
}

std::size_t CommandRing::serve(const Handler& handler) {
  Mailbox& box = mailbox();
  std::size_t served = 0;
  std::uint32_t tail = box.tail;
  // What was written to an entry is there once the head has passed it.
  while (tail != std::atomic_ref(box.head).load(std::memory_order_acquire)) {
    const std::uint64_t offset = std::uint64_t{box.ringOffset} + tail;
    auto* header = at<EntryHeader>(offset);
    if (header == nullptr) return served;
    const std::uint32_t length = header->lengthAndKind & ~kEntryKindMask;
    const auto kind = static_cast<EntryKind>(header->lengthAndKind & kEntryKindMask);
    if (length < sizeof(EntryHeader) || length > box.ringBytes - tail) return served;
    if (kind == EntryKind::Command) {
      if (!serveCommand(offset, handler)) header->ourFlags |= kNotUnderstood;
      ++served;
    } else if (kind != EntryKind::Padding) {
      header->ourFlags |= kNotUnderstood;
    }
    tail = (tail + length) % box.ringBytes;
    std::atomic_ref(box.tail).store(tail, std::memory_order_release);
  }
  return served;
}

// False where the entry cannot be read.
bool CommandRing::serveCommand(std::uint64_t entryOffset, const Handler& handler) {
  const auto* request = at<RequestEntry>(entryOffset);
  if (request == nullptr || request->dataPieces > kMostPieces) return false;
  const auto* firstPiece = at<DataPiece>(entryOffset + sizeof(RequestEntry), request->dataPieces);
  const auto* operation = at<std::uint8_t>(request->commandBlockOffset);
  if (firstPiece == nullptr || operation == nullptr) return false;
  const auto blockBytes = commandBlockBytes(*operation);
  if (at<std::uint8_t>(request->commandBlockOffset, blockBytes) == nullptr) return false;

  // The answer is written over the request, so what is needed of it is copied.
  std::array<std::uint8_t, 16> block{};
  std::copy_n(operation, blockBytes, block.begin());
  const std::vector<DataPiece> pieces(firstPiece, firstPiece + request->dataPieces);
  if (!gather(pieces)) return false;
  const RingAnswer result = handler(std::span(block).first(blockBytes), data_);
  if (result.readBytes) scatter(pieces);
  answer(entryOffset, result);
  return true;
}

bool CommandRing::gather(std::span<const DataPiece> pieces) {
  data_.clear();
  for (const auto& piece : pieces) {
    const auto* bytes = at<std::uint8_t>(piece.offset, piece.bytes);
    if (bytes == nullptr || piece.bytes > kMostDataBytes - data_.size()) return false;
    data_.insert(data_.end(), bytes, bytes + piece.bytes);
  }
  return true;
}

void CommandRing::scatter(std::span<const DataPiece> pieces) const {
  std::size_t done = 0;
  for (const auto& piece : pieces) {
    std::memcpy(at<std::uint8_t>(piece.offset, piece.bytes), data_.data() + done, piece.bytes);
    done += piece.bytes;
  }
}

void CommandRing::answer(std::uint64_t entryOffset, const RingAnswer& result) const {
  auto* response = at<ResponseEntry>(entryOffset);
  if (response == nullptr) return;
  response->status = result.status;
  std::ranges::fill(response->sense, std::uint8_t{0});
  std::ranges::copy(result.sense, std::begin(response->sense));
  const bool tellsLength =
      result.readBytes && (mailbox().flags & kKernelTakesReadLength) != 0 && result.status == 0;
  response->readLength = tellsLength ? *result.readBytes : 0;
  if (tellsLength) response->header.ourFlags |= kReadLengthIsGiven;
}

}  // namespace kelvane::kernelburner
