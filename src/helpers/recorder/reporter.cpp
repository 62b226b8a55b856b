// SPDX-License-Identifier: GPL-2.0-or-later
#include "helpers/recorder/reporter.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <nlohmann/json.hpp>

namespace kelvane::recorder {
namespace {

using nlohmann::json;

constexpr std::chrono::milliseconds kNoPatience{0};
constexpr std::chrono::milliseconds kLastMessagePatience{5000};
// A line this short is written whole or not at all, which a pipe guarantees up to PIPE_BUF.
constexpr size_t kLongestError = 2000;

void send(const json& message, std::chrono::milliseconds patience) {
  const std::string line =
      message.dump(-1, ' ', /*ensure_ascii=*/false, json::error_handler_t::replace) + "\n";
  pollfd output{.fd = STDOUT_FILENO, .events = POLLOUT, .revents = 0};
  if (poll(&output, 1, static_cast<int>(patience.count())) <= 0) return;
  // Nothing can be done about a reader that has gone.
  while (write(STDOUT_FILENO, line.data(), line.size()) < 0 && errno == EINTR) {
  }
}

}  // namespace

void Reporter::preparing() {
  send({{"state", "preparing"}}, kNoPatience);
}

void Reporter::writing(int64_t writtenBlocks, int64_t totalBlocks) {
  send({{"state", "writing"}, {"written", writtenBlocks}, {"total", totalBlocks}}, kNoPatience);
}

void Reporter::closing() {
  send({{"state", "closing"}}, kNoPatience);
}

void Reporter::erasing(int64_t erasedParts, int64_t totalParts) {
  send({{"state", "erasing"}, {"erased", erasedParts}, {"parts", totalParts}}, kNoPatience);
}

void Reporter::finishing() {
  send({{"state", "finishing"}}, kNoPatience);
}

void Reporter::done(int64_t startAddress, int64_t totalBlocks) {
  send({{"state", "done"}, {"address", startAddress}, {"total", totalBlocks}},
       kLastMessagePatience);
}

void Reporter::erased() {
  send({{"state", "done"}}, kLastMessagePatience);
}

void Reporter::failed(const std::string& error) {
  send({{"state", "failed"}, {"error", error.substr(0, kLongestError)}}, kLastMessagePatience);
}

}  // namespace kelvane::recorder
