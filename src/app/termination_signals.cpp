// SPDX-License-Identifier: GPL-2.0-or-later
#include "app/termination_signals.h"

#include <fcntl.h>
#include <unistd.h>

#include <QSocketNotifier>
#include <array>
#include <csignal>
#include <utility>

namespace kelvane {
namespace {

constexpr std::array<int, 3> kSignals = {SIGINT, SIGTERM, SIGHUP};

// A signal handler may do next to nothing, so it hands the number on through a pipe.
int pipeEnds[2] = {-1, -1};

void handOn(int signalNumber) {
  const auto byte = static_cast<unsigned char>(signalNumber);
  // Where the pipe is full, enough signals are waiting to be heard.
  [[maybe_unused]] const ssize_t written = write(pipeEnds[1], &byte, 1);
}

void setDisposition(void (*disposition)(int)) {
  struct sigaction action {};
  action.sa_handler = disposition;
  action.sa_flags = SA_RESTART;
  sigemptyset(&action.sa_mask);
  for (const int signalNumber : kSignals) sigaction(signalNumber, &action, nullptr);
}

}  // namespace

TerminationSignals::TerminationSignals(std::function<void(int)> handler)
    : handler_(std::move(handler)) {
  if (pipe2(pipeEnds, O_CLOEXEC | O_NONBLOCK) != 0) return;
  notifier_ = std::make_unique<QSocketNotifier>(pipeEnds[0], QSocketNotifier::Read);
  QObject::connect(notifier_.get(), &QSocketNotifier::activated, [this] {
    unsigned char byte = 0;
    while (read(pipeEnds[0], &byte, 1) == 1) handler_(byte);
  });
  setDisposition(handOn);
}

TerminationSignals::~TerminationSignals() {
  setDisposition(SIG_DFL);
  notifier_.reset();
  close(pipeEnds[0]);
  close(pipeEnds[1]);
}

}  // namespace kelvane
