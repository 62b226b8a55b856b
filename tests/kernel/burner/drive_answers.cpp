// SPDX-License-Identifier: GPL-2.0-or-later
#include "drive_answers.h"

#include <utility>

#include "virtualdrive/sense.h"

namespace kelvane::kernelburner {
namespace {

constexpr std::uint8_t kGoodStatus = 0x00;
constexpr std::uint8_t kCheckCondition = 0x02;
constexpr virtualdrive::Sense kNoSuchUnit{0x5, 0x25, 0x00};

RingAnswer refusal(const virtualdrive::Sense& sense) {
  return {.status = kCheckCondition, .sense = fixedFormat(sense), .readBytes = std::nullopt};
}

}  // namespace

CommandRing::Handler answersOf(const virtualdrive::VirtualDrive& drive,
                               std::function<void()> onGone) {
  return [drive, onGone = std::move(onGone)](std::span<const std::uint8_t> commandBlock,
                                             std::span<std::uint8_t> data) {
    // No command both sends and reads, so one room serves for both.
    const auto result = drive.execute(commandBlock, data, data);
    if (result.gone) {
      onGone();
      return refusal(kNoSuchUnit);
    }
    if (!result.good()) return refusal(result.sense);
    return RingAnswer{.status = kGoodStatus,
                      .sense = {},
                      .readBytes = static_cast<std::uint32_t>(result.transferred)};
  };
}

}  // namespace kelvane::kernelburner
