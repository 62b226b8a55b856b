// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/remaining_time.h"

#include <cmath>
#include <utility>

#include "platform/foundation/placeholders.h"
#include "platform/foundation/strings_table.h"
#include "ui/view_parts.h"

namespace kelvane {
namespace {

using std::chrono::milliseconds;

// Less than that says nothing of the rest.
constexpr milliseconds kLeastTime{2000};
constexpr double kLeastFraction = 0.02;

milliseconds steadyTime() {
  return std::chrono::duration_cast<milliseconds>(
      std::chrono::steady_clock::now().time_since_epoch());
}

}  // namespace

RemainingTime::RemainingTime() : RemainingTime(steadyTime) {}

RemainingTime::RemainingTime(Clock clock) : clock_(std::move(clock)) {
  begin();
}

void RemainingTime::begin(double fraction) {
  beginning_ = clock_();
  fractionAtBeginning_ = fraction;
  beginsWithNext_ = false;
}

QString RemainingTime::textAt(double fraction) {
  constexpr double kMillisecondsPerMinute = 60'000;
  constexpr double kRounding = 0.01;
  if (beginsWithNext_) begin(fraction);
  const milliseconds elapsed = clock_() - beginning_;
  const double done = fraction - fractionAtBeginning_;
  if (elapsed < kLeastTime || done < kLeastFraction || fraction >= 1) return {};
  const double left = static_cast<double>(elapsed.count()) * (1 - fraction) / done;
  const double minutes = left / kMillisecondsPerMinute;
  if (minutes <= 1) return localizedText("UnderAMinuteLeft");
  return QString::fromStdString(
      format(localizedString("MinutesLeft"), static_cast<int64_t>(std::ceil(minutes - kRounding))));
}

}  // namespace kelvane
