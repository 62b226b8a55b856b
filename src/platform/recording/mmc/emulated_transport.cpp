// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/recording/mmc/emulated_transport.h"

#include <cerrno>

namespace kelvane::mmc {
namespace {

Answer answerFrom(const virtualdrive::CommandResult& result) {
  Answer answer;
  answer.transferred = result.transferred;
  answer.sense = Sense{result.sense.key, result.sense.code, result.sense.qualifier};
  answer.status = result.good() ? Status::Good : Status::CheckCondition;
  if (result.gone) {
    answer.status = Status::Unreachable;
    answer.errorNumber = ENODEV;
  } else if (result.systemError != 0) {
    answer.status = Status::Unreachable;
    answer.errorNumber = result.systemError;
  }
  return answer;
}

}  // namespace

Answer EmulatedTransport::read(std::span<const uint8_t> commandBlock, std::span<uint8_t> data,
                               std::chrono::milliseconds) {
  return answerFrom(drive_.execute(commandBlock, data, {}));
}

Answer EmulatedTransport::write(std::span<const uint8_t> commandBlock,
                                std::span<const uint8_t> data, std::chrono::milliseconds) {
  return answerFrom(drive_.execute(commandBlock, {}, data));
}

}  // namespace kelvane::mmc
