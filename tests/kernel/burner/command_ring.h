// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "ring_layout.h"

namespace kelvane::kernelburner {

/// How a command went.
struct RingAnswer {
  /// SCSI status: 0 is GOOD, 2 is CHECK CONDITION.
  std::uint8_t status = 0;
  /// Of a CHECK CONDITION, in fixed format.
  std::array<std::uint8_t, 18> sense{};
  /// Bytes that were put into the data of a command that reads; empty for every other.
  std::optional<std::uint32_t> readBytes;
};

/// The ring of commands that the kernel shares with whoever carries them out (see ring_layout.h).
///
/// The memory is borrowed and must outlive the ring. One thread at a time. The kernel is trusted to
/// mean well but not to be without faults: an entry that points out of the memory is refused, and a
/// ring whose own numbers are wrong is never read.
class CommandRing {
 public:
  /// Carries out a command block of 6 to 16 bytes. `data` is what the command sends, and takes what
  /// it reads.
  using Handler = std::function<RingAnswer(std::span<const std::uint8_t> commandBlock,
                                           std::span<std::uint8_t> data)>;

  /// Empty, with a sentence in `error`, where the memory holds no ring of the version we know.
  static std::optional<CommandRing> over(std::span<std::byte> memory, std::string* error);

  /// Has every command that waits carried out, in order, and gives their number. The kernel is to
  /// be told of it when that is not 0.
  std::size_t serve(const Handler& handler);

 private:
  explicit CommandRing(std::span<std::byte> memory) : memory_(memory) {}

  Mailbox& mailbox() const { return *reinterpret_cast<Mailbox*>(memory_.data()); }
  template <typename T>
  T* at(std::uint64_t offset, std::uint64_t count = 1) const;
  bool serveCommand(std::uint64_t entryOffset, const Handler& handler);
  bool gather(std::span<const DataPiece> pieces);
  void scatter(std::span<const DataPiece> pieces) const;
  void answer(std::uint64_t entryOffset, const RingAnswer& answer) const;

  std::span<std::byte> memory_;
  /// The data of the command at hand, in one piece. Kept, so that its room is.
  std::vector<std::uint8_t> data_;
};

}  // namespace kelvane::kernelburner
