// SPDX-License-Identifier: GPL-2.0-or-later
// What a fault script may say.
#include "virtualdrive/faults/fault_script.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kelvane::virtualdrive {
namespace {

using Moment = FaultTrigger::Moment;
using testing::ElementsAre;
using testing::IsEmpty;

FaultScript parsed(std::string_view text) {
  std::string error;
  auto script = parseFaultScript(text, &error);
  EXPECT_TRUE(script.has_value()) << error;
  return script.value_or(FaultScript{});
}

std::string problemWith(std::string_view text) {
  std::string error;
  EXPECT_FALSE(parseFaultScript(text, &error).has_value()) << text;
  return error;
}

TEST(FaultScript, NothingAndRemarksAreNoFaults) {
  EXPECT_THAT(parsed("").faults, IsEmpty());
  EXPECT_THAT(parsed("# on write: gone\n\n  \t\r\n").faults, IsEmpty());
}

TEST(FaultScript, ACommandIsNamedCountedAndRefused) {
  const auto faults = parsed("on write 120: sense 3/0C/00 # half way").faults;
  ASSERT_EQ(faults.size(), 1U);
  EXPECT_EQ(faults[0].trigger.moment, Moment::Before);
  EXPECT_THAT(faults[0].trigger.operations, ElementsAre(0x2A, 0xAA));
  EXPECT_EQ(faults[0].trigger.number, 120U);
  EXPECT_FALSE(faults[0].trigger.andLater);
  EXPECT_FALSE(faults[0].trigger.address.has_value());
  EXPECT_EQ(faults[0].effect, FaultEffect::Refusal);
  EXPECT_EQ(faults[0].sense, (Sense{3, 0x0C, 0}));
}

TEST(FaultScript, WithoutANumberTheFirstCommandIsMeant) {
  const auto faults = parsed("on command: attention\nafter close: stale\non 0x53: gone").faults;
  ASSERT_EQ(faults.size(), 3U);
  EXPECT_THAT(faults[0].trigger.operations, IsEmpty());
  EXPECT_EQ(faults[0].trigger.number, 1U);
  EXPECT_EQ(faults[0].effect, FaultEffect::Attention);
  EXPECT_EQ(faults[1].trigger.moment, Moment::After);
  EXPECT_EQ(faults[1].effect, FaultEffect::Stale);
  EXPECT_THAT(faults[2].trigger.operations, ElementsAre(0x53));
  EXPECT_EQ(faults[2].effect, FaultEffect::Gone);
}

TEST(FaultScript, ASectorAndEverythingLater) {
  const auto faults = parsed("on read 2 lba 5000 and later: full").faults;
  ASSERT_EQ(faults.size(), 1U);
  EXPECT_EQ(faults[0].trigger.number, 2U);
  EXPECT_EQ(faults[0].trigger.address, 5000);
  EXPECT_TRUE(faults[0].trigger.andLater);
  EXPECT_EQ(faults[0].sense, kEndOfUserArea);
}

TEST(FaultScript, WhatHoldsAllTheTime) {
  const auto script = parsed("load: not ready 250 ms\nexclusive: refused\npace: 1385 KB/s\n");
  EXPECT_EQ(script.notReadyAfterLoad, std::chrono::milliseconds(250));
  EXPECT_TRUE(script.refusesExclusiveAccess);
  EXPECT_EQ(script.bytesPerSecond, 1385000);
  EXPECT_EQ(parsed("load: never ready").notReadyAfterLoad, FaultScript::kNeverReady);
}

TEST(FaultScript, WhatIsNotUnderstoodIsToldWithItsLine) {
  EXPECT_EQ(problemWith("\non writ: full"), "line 2: no command has the name “writ”");
  EXPECT_EQ(problemWith("on write"), "line 1: there is no colon");
  EXPECT_EQ(problemWith("on write 0: full"), "line 1: commands are counted from 1");
  EXPECT_EQ(problemWith("on write lba: full"), "line 1: “lba” needs the number of a sector");
  EXPECT_EQ(problemWith("on write 3 and: full"), "line 1: “and” is followed by “later”");
  EXPECT_EQ(problemWith("on write x: full"), "line 1: “x” is not understood");
  EXPECT_EQ(problemWith("on write: sense 3/0C"), "line 1: a sense is written as 3/0C/00");
  EXPECT_EQ(problemWith("on write: sense 0/00/00"), "line 1: a sense is written as 3/0C/00");
  EXPECT_EQ(problemWith("on write: sense 3/100/00"), "line 1: a sense is written as 3/0C/00");
  EXPECT_EQ(problemWith("on write: stale"), "line 1: “stale” cannot happen here");
  EXPECT_EQ(problemWith("after write: full"), "line 1: “full” cannot happen here");
  EXPECT_EQ(problemWith("on write: gone now"), "line 1: “now” is not understood");
  EXPECT_EQ(problemWith("on 0x1FF: gone"), "line 1: no command has the name “0x1FF”");
  EXPECT_EQ(problemWith("load: slowly"),
            "line 1: after “load:” comes “not ready N ms” or “never ready”");
  EXPECT_EQ(problemWith("exclusive: granted"), "line 1: after “exclusive:” comes “refused”");
  EXPECT_EQ(problemWith("pace: fast"), "line 1: after “pace:” comes “N KB/s”");
  EXPECT_EQ(problemWith("pace: 0 KB/s"), "line 1: after “pace:” comes “N KB/s”");
  EXPECT_EQ(problemWith("when: now"),
            "line 1: a line begins with “on”, “after”, “load:”, “exclusive:” or “pace:”");
}

}  // namespace
}  // namespace kelvane::virtualdrive
