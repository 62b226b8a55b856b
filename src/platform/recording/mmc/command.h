// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <span>

#include "platform/recording/mmc_transport.h"

namespace kelvane::mmc {

/// For questions, which a drive answers at once unless it is busy with its disc.
inline constexpr std::chrono::milliseconds kQuestionTimeLimit{10'000};
/// For what moves the tray or the disc.
inline constexpr std::chrono::milliseconds kMechanicalTimeLimit{60'000};

/// Big-endian numbers of a reply. Bytes beyond its end read as 0, so a short reply needs no care.
uint8_t byteAt(std::span<const uint8_t> reply, size_t offset);
uint16_t wordAt(std::span<const uint8_t> reply, size_t offset);
uint32_t longAt(std::span<const uint8_t> reply, size_t offset);

/// Sends a command that reads, again where the drive first tells of something else: a unit
/// attention (a new disc, a reset) is reported once, in place of the answer. (SPC-3, 4.5.6)
Answer ask(Transport& transport, std::span<const uint8_t> commandBlock, std::span<uint8_t> data,
           std::chrono::milliseconds timeLimit = kQuestionTimeLimit);

/// The same for a command without data.
Answer tell(Transport& transport, std::span<const uint8_t> commandBlock,
            std::chrono::milliseconds timeLimit = kQuestionTimeLimit);

/// The same for a command without data that sets something in the drive, for which it takes the
/// right to write to it.
Answer instruct(Transport& transport, std::span<const uint8_t> commandBlock,
                std::chrono::milliseconds timeLimit = kQuestionTimeLimit);

}  // namespace kelvane::mmc
