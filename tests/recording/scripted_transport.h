// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <algorithm>
#include <cstdint>
#include <deque>
#include <vector>

#include "platform/recording/mmc_transport.h"

namespace kelvane::testing {

/// A drive that gives the answers it was told to, in order, and notes what it was asked. Without
/// an answer left it cannot be reached, for the reason `silence`.
class ScriptedTransport : public mmc::Transport {
 public:
  void answerGood(std::vector<uint8_t> data = {}) {
    answers_.push_back({mmc::Status::Good, {}, std::move(data)});
  }
  void answerCheckCondition(mmc::Sense sense) {
    answers_.push_back({mmc::Status::CheckCondition, sense, {}});
  }
  /// One question that the drive cannot be reached with, for that reason.
  void answerUnreachable(int errorNumber) {
    answers_.push_back({mmc::Status::Unreachable, {}, {}, errorNumber});
  }

  mmc::Answer read(std::span<const uint8_t> commandBlock, std::span<uint8_t> data,
                   std::chrono::milliseconds) override {
    commands.emplace_back(commandBlock.begin(), commandBlock.end());
    return next(data);
  }

  mmc::Answer write(std::span<const uint8_t> commandBlock, std::span<const uint8_t>,
                    std::chrono::milliseconds) override {
    commands.emplace_back(commandBlock.begin(), commandBlock.end());
    written.push_back(commands.back());
    return next({});
  }

  std::vector<std::vector<uint8_t>> commands;
  std::vector<std::vector<uint8_t>> written;  ///< Those of them that set something in the drive.
  int silence = 0;                            ///< An errno value.

 private:
  mmc::Answer next(std::span<uint8_t> data) {
    mmc::Answer answer;
    if (answers_.empty()) {
      answer.errorNumber = silence;
      return answer;
    }
    const Scripted scripted = answers_.front();
    answers_.pop_front();
    answer.status = scripted.status;
    answer.sense = scripted.sense;
    answer.errorNumber = scripted.errorNumber;
    answer.transferred = std::min(scripted.data.size(), data.size());
    std::copy_n(scripted.data.begin(), answer.transferred, data.begin());
    return answer;
  }

  struct Scripted {
    mmc::Status status;
    mmc::Sense sense;
    std::vector<uint8_t> data;
    int errorNumber = 0;
  };

  std::deque<Scripted> answers_;
};

}  // namespace kelvane::testing
