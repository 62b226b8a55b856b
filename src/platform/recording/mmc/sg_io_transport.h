// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <memory>
#include <string>

#include "platform/recording/mmc_transport.h"

namespace kelvane::mmc {

/// The road to a real drive: the kernel's SG_IO on its device node.
///
/// The node is opened for each command and closed after it: an open descriptor would keep the
/// kernel from noticing that the drive was unplugged, and a recorder from taking the drive for
/// itself.
class SgIoTransport : public Transport {
 public:
  /// `devicePath` is a node such as "/dev/sr0".
  explicit SgIoTransport(std::string devicePath) : devicePath_(std::move(devicePath)) {}

  Answer read(std::span<const uint8_t> commandBlock, std::span<uint8_t> data,
              std::chrono::milliseconds timeLimit) override;
  Answer write(std::span<const uint8_t> commandBlock, std::span<const uint8_t> data,
               std::chrono::milliseconds timeLimit) override;

  /// Whether the kernel refuses an exclusive descriptor (O_EXCL) of the node: a burning program has
  /// one, or a volume is mounted from it.
  bool refusesExclusiveAccess() const override;

 private:
  // The data of a command, as the kernel's interface has it.
  struct Transfer {
    void* data;
    size_t size;
    int direction;
  };

  Answer execute(std::span<const uint8_t> commandBlock, const Transfer& transfer, int access,
                 std::chrono::milliseconds timeLimit) const;

  std::string devicePath_;
};

}  // namespace kelvane::mmc
