// SPDX-License-Identifier: GPL-2.0-or-later
#include "burn/imaging_verdict.h"

#include <gtest/gtest.h>

namespace kelvane {
namespace {

TEST(ImagingVerdict, SilenceIsSuccess) {
  EXPECT_EQ(judgeImaging(""), ImagingVerdict::Successful);
}

TEST(ImagingVerdict, TheLineThatADiscIsContinuedIsSuccessAlsoAfterOtherLines) {
  EXPECT_EQ(judgeImaging("Rock Ridge signatures found\n"), ImagingVerdict::Successful);
  EXPECT_EQ(judgeImaging("a warning\nRock Ridge signatures found\n"), ImagingVerdict::Successful);
  EXPECT_EQ(judgeImaging("... Rock Ridge signatures found\n"), ImagingVerdict::Successful);
}

TEST(ImagingVerdict, TheSameTextWithoutItsLineFeedIsAFailure) {
  EXPECT_EQ(judgeImaging("Rock Ridge signatures found"), ImagingVerdict::Failed);
}

TEST(ImagingVerdict, AnythingAfterThatLineIsAFailure) {
  EXPECT_EQ(judgeImaging("Rock Ridge signatures found\n\n"), ImagingVerdict::Failed);
  EXPECT_EQ(judgeImaging("Rock Ridge signatures found\nmkisofs: No space left on device\n"),
            ImagingVerdict::Failed);
}

TEST(ImagingVerdict, AnyOtherTextIsAFailure) {
  EXPECT_EQ(judgeImaging("\n"), ImagingVerdict::Failed);
  EXPECT_EQ(judgeImaging("rock ridge signatures found\n"), ImagingVerdict::Failed);
  EXPECT_EQ(judgeImaging("found\n"), ImagingVerdict::Failed);
}

TEST(AsciiText, KeepsAsciiAndMarksEveryOtherByte) {
  EXPECT_EQ(asciiText("plain\ttext\n"), "plain\ttext\n");
  EXPECT_EQ(asciiText("\xC3\xA4"), "??");
  EXPECT_EQ(asciiText(std::string_view("\0\x7F\x80", 3)), std::string("\0\x7F?", 3));
}

}  // namespace
}  // namespace kelvane
