// SPDX-License-Identifier: GPL-2.0-or-later
#include "virtualdrive/tool/stop_signals.h"

namespace kelvane::virtualdrive::tool {
namespace {

volatile sig_atomic_t requested = 0;

void request(int) {
  requested = 1;
}

}  // namespace

StopSignals::StopSignals() {
  struct sigaction action {};
  // Without SA_RESTART: a read that waits for the image gives up.
  action.sa_handler = request;
  for (std::size_t i = 0; i < kSignals.size(); ++i) sigaction(kSignals[i], &action, &before_[i]);
}

StopSignals::~StopSignals() {
  for (std::size_t i = 0; i < kSignals.size(); ++i) sigaction(kSignals[i], &before_[i], nullptr);
}

bool StopSignals::stopRequested() const {
  return requested != 0;
}

}  // namespace kelvane::virtualdrive::tool
