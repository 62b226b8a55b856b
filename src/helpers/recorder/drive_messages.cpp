// SPDX-License-Identifier: GPL-2.0-or-later
#include "helpers/recorder/drive_messages.h"

#include <sys/types.h>

#include <array>
#include <cstdint>
#include <ctime>

#include <libburn/libburn.h>

namespace kelvane::recorder {
namespace {

// libburn takes names as arrays that it promises not to change.
char kLeastSeverity[] = "SORRY";
char kNever[] = "NEVER";
char kNoPrefix[] = "";

}  // namespace

void DriveMessages::startQueue() {
  burn::burn_msgs_set_severities(kLeastSeverity, kNever, kNoPrefix);
}

void DriveMessages::collect() {
  constexpr size_t kSeverityBytes = 80;
  std::array<char, BURN_MSGS_MESSAGE_LEN> text{};
  std::array<char, kSeverityBytes> severityName{};
  int errorCode = 0;
  int errorNumber = 0;
  while (burn::burn_msgs_obtain(kLeastSeverity, &errorCode, text.data(), &errorNumber,
                                severityName.data()) == 1) {
    int severity = 0;
    burn::burn_text_to_sev(severityName.data(), &severity, 0);
    if (severity <= worstSeverity_) continue;
    worstSeverity_ = severity;
    worst_ = text.data();
  }
}

}  // namespace kelvane::recorder
