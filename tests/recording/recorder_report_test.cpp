// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/recording/recorder_report.h"

#include <gtest/gtest.h>

#include <random>

namespace kelvane {
namespace {

using Kind = RecorderReport::Kind;

TEST(RecorderReport, IsReadInEachOfItsKinds) {
  EXPECT_EQ(parseRecorderReport(R"({"state":"preparing"})")->kind, Kind::Preparing);
  EXPECT_EQ(parseRecorderReport(R"({"state":"closing"})")->kind, Kind::Closing);
  EXPECT_EQ(parseRecorderReport(R"({"state":"finishing"})")->kind, Kind::Finishing);
  const auto writing = parseRecorderReport(R"({"state":"writing","written":12,"total":300})");
  EXPECT_EQ(writing->kind, Kind::Writing);
  EXPECT_EQ(writing->writtenBlocks, 12);
  EXPECT_EQ(writing->totalBlocks, 300);
  const auto erasing = parseRecorderReport(R"({"state":"erasing","erased":900,"parts":65536})");
  EXPECT_EQ(erasing->kind, Kind::Erasing);
  EXPECT_EQ(erasing->erasedParts, 900);
  EXPECT_EQ(erasing->totalParts, 65536);
  const auto done = parseRecorderReport(R"({"state":"done","address":11702,"total":300})");
  EXPECT_EQ(done->kind, Kind::Done);
  EXPECT_EQ(done->startAddress, 11702);
  const auto failed = parseRecorderReport(R"({"state":"failed","error":"no disc"})");
  EXPECT_EQ(failed->kind, Kind::Failed);
  EXPECT_EQ(failed->error, "no disc");
}

TEST(RecorderReport, IgnoresMembersItDoesNotKnow) {
  EXPECT_EQ(parseRecorderReport(R"({"state":"closing","buffer":[1,{"a":2}]})")->kind,
            Kind::Closing);
}

TEST(RecorderReport, OfAnythingElseIsNone) {
  for (const char* line :
       {"", " ", "garbage", "{", "[]", "\"done\"", "null", "3", R"({"state":7})",
        R"({"state":"resting"})", R"({"written":3})", R"({"state":"writing","written":"much"})",
        R"({"state":"writing","total":1.5})", R"({"state":"failed","error":{}})",
        R"({"state":"done")", "\xFF\xFE", R"({"state":"done"} trailing)"}) {
    EXPECT_FALSE(parseRecorderReport(line)) << line;
  }
}

TEST(RecorderReport, NumbersOutOfRangeDoNotBecomeNegative) {
  const auto report =
      parseRecorderReport(R"({"state":"writing","written":-5,"total":18446744073709551615})");
  ASSERT_TRUE(report);
  EXPECT_GE(report->writtenBlocks, 0);
  EXPECT_GE(report->totalBlocks, 0);
}

TEST(RecorderReport, SurvivesDeepNestingAndRandomBytes) {
  EXPECT_FALSE(parseRecorderReport(std::string(10000, '[')));
  std::mt19937 random(7);
  for (int round = 0; round < 5000; ++round) {
    std::string line(random() % 60, '\0');
    for (char& character : line) character = static_cast<char>(random());
    EXPECT_FALSE(parseRecorderReport(line));
  }
}

}  // namespace
}  // namespace kelvane
