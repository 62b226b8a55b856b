// SPDX-License-Identifier: GPL-2.0-or-later
#include "burn/growisofs_output.h"

#include <gtest/gtest.h>

namespace kelvane {
namespace {

using Kind = GrowisofsChunk::Kind;

constexpr char kFull[] = ":-( next session would cross 4GB boundary, aborting...";

TEST(GrowisofsOutputTest, APercentageIsItsIntegerPartWithTheBlanksBeforeIt) {
  const GrowisofsChunk chunk = readGrowisofsChunk(" 42.17% done, estimate finish Sat Nov 21\n 43.");
  EXPECT_EQ(chunk.kind, Kind::Lines);
  EXPECT_EQ(chunk.percentDone, " 42");
  EXPECT_EQ(chunk.error, std::nullopt);
  EXPECT_EQ(chunk.fragment, " 43.");
}

TEST(GrowisofsOutputTest, PercentsOfEveryWidthAreUnderstood) {
  EXPECT_EQ(readGrowisofsChunk("  0.34% done, estimate\n").percentDone, "  0");
  EXPECT_EQ(readGrowisofsChunk("100.00% done, estimate\n").percentDone, "100");
  EXPECT_DOUBLE_EQ(barValueOfPercent("  0"), 0.0);
  EXPECT_DOUBLE_EQ(barValueOfPercent(" 42"), 0.84);
  EXPECT_DOUBLE_EQ(barValueOfPercent("100"), 2.0);
  EXPECT_DOUBLE_EQ(barValueOfPercent("abc"), 0.0);
}

TEST(GrowisofsOutputTest, ALineOfThirteenCharactersIsNoPercentageAndOneOfFourteenIs) {
  EXPECT_EQ(readGrowisofsChunk(" 42.17% done,\n").percentDone, std::nullopt);
  EXPECT_EQ(readGrowisofsChunk(" 42.17% done, \n").percentDone, " 42");
}

TEST(GrowisofsOutputTest, TheMarkOfAPercentageCountsAtItsPlaceOnly) {
  EXPECT_EQ(readGrowisofsChunk("42.17% done, estimate finish\n").percentDone, std::nullopt);
  EXPECT_EQ(readGrowisofsChunk("  42.17% done, estimate finish\n").percentDone, std::nullopt);
  EXPECT_EQ(readGrowisofsChunk(" 42.17% DONE, estimate finish\n").percentDone, std::nullopt);
  EXPECT_EQ(readGrowisofsChunk("abcdef% done, whatever else\n").percentDone, "abc");
}

// Latin 1 gives each byte a character, so a line in UTF-8 is longer than its reader would count.
TEST(GrowisofsOutputTest, CharactersAreCountedAsIsoLatin1) {
  EXPECT_EQ(readGrowisofsChunk("\xC3\xA4\xC3\xA4  % done, xx\n").percentDone,
            "\xC3\x83\xC2\xA4\xC3\x83");
  const GrowisofsChunk chunk = readGrowisofsChunk("x\n:-( \xE4\n\xF6");
  EXPECT_EQ(chunk.error, ":-( \xC3\xA4");
  EXPECT_EQ(chunk.fragment, "\xC3\xB6");
}

TEST(GrowisofsOutputTest, AChunkThatBeginsWithTheMarkIsOneErrorWithItsLineFeeds) {
  const GrowisofsChunk chunk = readGrowisofsChunk(std::string(kFull) + "\n");
  EXPECT_EQ(chunk.kind, Kind::Error);
  EXPECT_EQ(chunk.error, std::string(kFull) + "\n");
  EXPECT_EQ(readGrowisofsChunk(":-( one\n 42.17% done, x\n:-( two").error,
            ":-( one\n 42.17% done, x\n:-( two");
  EXPECT_EQ(readGrowisofsChunk(":-(").kind, Kind::Error);
}

TEST(GrowisofsOutputTest, TheLastCompleteLineOfAChunkIsAnErrorWithoutItsLineFeed) {
  EXPECT_EQ(readGrowisofsChunk("before\n" + std::string(kFull) + "\n").error, kFull);
  EXPECT_EQ(readGrowisofsChunk("before\n" + std::string(kFull) + "\nafter").error, kFull);
}

TEST(GrowisofsOutputTest, EarlierLinesOfAChunkGoUnseen) {
  const GrowisofsChunk chunk =
      readGrowisofsChunk(" 42.17% done, estimate\n:-( lost\n 43.00% done, estimate\n");
  EXPECT_EQ(chunk.error, std::nullopt);
  EXPECT_EQ(chunk.percentDone, " 43");
  EXPECT_EQ(readGrowisofsChunk(" 42.17% done, estimate\nother\n").percentDone, std::nullopt);
}

TEST(GrowisofsOutputTest, AnErrorInTheUnfinishedLineIsNotSeen) {
  const GrowisofsChunk chunk = readGrowisofsChunk("line\n:-( cut o");
  EXPECT_EQ(chunk.error, std::nullopt);
  EXPECT_EQ(chunk.fragment, ":-( cut o");
}

TEST(GrowisofsOutputTest, OtherMarksAreNoErrors) {
  for (const std::string line : {":-[ WRITE@LBA=10h failed", ":-! ignoring...", ":-? resuming",
                                 " :-( indented", ":-", ":"}) {
    EXPECT_EQ(readGrowisofsChunk("x\n" + line + "\n").error, std::nullopt) << line;
    EXPECT_EQ(readGrowisofsChunk(line + "\n").error, std::nullopt) << line;
  }
}

TEST(GrowisofsOutputTest, WithoutALineFeedAllIsAFragment) {
  const GrowisofsChunk chunk = readGrowisofsChunk(" 42.17% done, estimate finish");
  EXPECT_EQ(chunk.kind, Kind::Fragment);
  EXPECT_EQ(chunk.fragment, " 42.17% done, estimate finish");
  EXPECT_EQ(chunk.percentDone, std::nullopt);
}

TEST(GrowisofsOutputTest, EmptyAndOddChunksAreTakenAsTheyCome) {
  EXPECT_EQ(readGrowisofsChunk("").kind, Kind::Fragment);
  EXPECT_EQ(readGrowisofsChunk("").fragment, "");
  EXPECT_EQ(readGrowisofsChunk("\n").kind, Kind::Lines);
  EXPECT_EQ(readGrowisofsChunk("\n\n").percentDone, std::nullopt);
  EXPECT_EQ(readGrowisofsChunk("\n\n").fragment, "");
  EXPECT_EQ(readGrowisofsChunk(std::string_view("a\0b\n", 4)).kind, Kind::Lines);
  // A carriage return is a character as any other.
  EXPECT_EQ(readGrowisofsChunk("x\n:-( bad\r\n").error, ":-( bad\r");
}

}  // namespace
}  // namespace kelvane
