// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/recording/mmc/unit_ready.h"

#include <array>

#include "platform/recording/mmc/command.h"

namespace kelvane::mmc {
namespace {

constexpr uint8_t kNotReady = 0x2;
constexpr uint8_t kMediumNotPresent = 0x3A;
constexpr uint8_t kLogicalUnitNotReady = 0x04;
// Qualifiers of kLogicalUnitNotReady with which waiting does not help.
constexpr uint8_t kInitializingCommandRequired = 0x02;
constexpr uint8_t kManualInterventionRequired = 0x03;

}  // namespace

Readiness readinessFrom(const Answer& answer) {
  if (answer.status == Status::Unreachable) return Readiness::Unreachable;
  if (answer.isGood()) return Readiness::Ready;
  if (answer.sense.code == kMediumNotPresent) return Readiness::NoDisc;
  if (answer.sense.key == kNotReady && answer.sense.code == kLogicalUnitNotReady) {
    const bool waitingHelps = answer.sense.qualifier != kInitializingCommandRequired &&
                              answer.sense.qualifier != kManualInterventionRequired;
    return waitingHelps ? Readiness::BecomingReady : Readiness::Unusable;
  }
  return Readiness::Unusable;
}

Readiness testUnitReady(Transport& transport) {
  constexpr std::array<uint8_t, 6> kCommandBlock{0x00};
  return readinessFrom(tell(transport, kCommandBlock));
}

}  // namespace kelvane::mmc
