// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <utility>

#include "platform/recording/mmc_transport.h"
#include "virtualdrive/virtual_drive.h"

namespace kelvane::mmc {

/// The road to an emulated drive, which carries commands out within the call.
class EmulatedTransport : public Transport {
 public:
  explicit EmulatedTransport(virtualdrive::VirtualDrive drive) : drive_(std::move(drive)) {}

  Answer read(std::span<const uint8_t> commandBlock, std::span<uint8_t> data,
              std::chrono::milliseconds timeLimit) override;
  Answer write(std::span<const uint8_t> commandBlock, std::span<const uint8_t> data,
               std::chrono::milliseconds timeLimit) override;
  bool refusesExclusiveAccess() const override { return drive_.refusesExclusiveAccess(); }

 private:
  virtualdrive::VirtualDrive drive_;
};

}  // namespace kelvane::mmc
